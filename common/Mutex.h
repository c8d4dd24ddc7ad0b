#pragma once

#include "common/String.h"

namespace Common
{
namespace Synchronization
{

// The id of a named mutex's semaphore set; 0 while none is held.
struct OSMutexHandle
{
    int id;
};

// A system-wide mutex known by name (a lock file in the lock-file folder; see
// platform/named_mutex.h), shared with other programs on the machine and
// with other threads of this process alike. Constructing one acquires
// nothing; the destructor releases it if it is held.
class Mutex
{
public:
    enum State
    {
        HELD = 0,    // held by this object
        BUSY = 1,    // the last attempt found it held elsewhere
        RELEASED = 2 // not held by this object
    };

    explicit Mutex(string const& name);
    virtual ~Mutex();

    Mutex(Mutex const&) = delete;
    Mutex& operator=(Mutex const&) = delete;

    // With `wait`, first blocks until the mutex is taken (Wait). Then, unless
    // held, tries once without blocking. True when this object holds it.
    virtual bool capture(bool const& wait);

    // Unless held: takes the mutex, blocking while it is held elsewhere.
    // State stays unchanged if the semaphore cannot be operated.
    virtual void Wait();

    // Gives a held mutex back. True when the state is RELEASED afterwards,
    // which includes a mutex never captured (the semaphore is then not
    // touched); false after a failed capture (BUSY) or a failed give-back.
    virtual bool release();

    State eMutexState() const { return m_state; }

private:
    State m_state;
    string m_name;
    OSMutexHandle* m_handle;
};

} // namespace Synchronization
} // namespace Common
