#pragma once

#include "common/Threadable.h"

#include <pthread.h>

namespace Common
{
namespace Synchronization
{

// A POSIX thread (default attributes) that runs a Threadable's Run() once.
//
// "Running" means started and not yet joined: it stays true after Run has
// returned, until Join. If the thread cannot be created the object is not
// running and Join does nothing. The destructor joins a running thread, so it
// blocks until Run has returned; a thread is never left behind referring to
// a Threadable that may be gone. Not synchronized: one Thread object must not
// be joined or destroyed from two threads at once.
class Thread
{
public:
    explicit Thread(Threadable& work);
    ~Thread();

    Thread(Thread const&) = delete;
    Thread& operator=(Thread const&) = delete;

    // Waits for a running thread to end; afterwards the object is not
    // running. Does nothing when not running (so calling it again is
    // harmless).
    void Join();

    bool running() const { return m_handle != nullptr; }

    // The same object, or both running the same thread.
    bool operator==(Thread const& other) const;
    bool operator!=(Thread const& other) const { return !(*this == other); }

private:
    pthread_t* m_handle; // null when not running
};

} // namespace Synchronization
} // namespace Common
