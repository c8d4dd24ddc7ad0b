#pragma once

#include "common/ProcessMutex.h"

namespace Common
{
namespace Synchronization
{

// Holds a ProcessMutex (or RecursiveProcessMutex) locked for the lifetime of
// a scope. If Lock fails, locked() is false and nothing is unlocked later.
class ScopedMutexLock
{
public:
    explicit ScopedMutexLock(ProcessMutex& mutex) : m_mutex(mutex), m_result(mutex.Lock()) {}
    ~ScopedMutexLock()
    {
        if (locked())
            m_mutex.Unlock();
    }

    ScopedMutexLock(ScopedMutexLock const&) = delete;
    ScopedMutexLock& operator=(ScopedMutexLock const&) = delete;

    bool locked() const { return m_result == 0; }

private:
    ProcessMutex& m_mutex;
    int m_result; // of Lock
};

} // namespace Synchronization
} // namespace Common
