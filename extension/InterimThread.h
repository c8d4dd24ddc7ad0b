#pragma once

// INTERIM: stands in for Common::Synchronization::Thread and Threadable
// (Part 7.6) until they land on main; same shape (a Thread runs a Threadable's
// Run() once on a POSIX thread with default attributes; the destructor joins).
// When Part 7.6 lands, include "common/Thread.h" instead, use
// Common::Synchronization, and delete this file and InterimThread.cpp.

#include <pthread.h>

namespace Interim
{

class Threadable
{
public:
    virtual ~Threadable() {}
    // Called once on the new thread; must not let an exception escape.
    virtual void Run() = 0;
};

class Thread
{
public:
    // Starts the thread at once. If it cannot be created, the object is not
    // running and nothing is run.
    explicit Thread(Threadable& work);
    // Joins a running thread.
    ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    void Join();
    bool running() const { return m_running; }

private:
    pthread_t m_handle;
    bool m_running;
};

} // namespace Interim
