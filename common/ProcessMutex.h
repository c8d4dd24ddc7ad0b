#pragma once

#include <pthread.h>

namespace Common
{
namespace Synchronization
{

// A mutex between the threads of this process only (despite the name): a
// heap-allocated pthread mutex with default attributes. Lock and Unlock
// return the pthread result (0 on success). Locking it twice from one thread
// deadlocks; use RecursiveProcessMutex for that.
class ProcessMutex
{
public:
    ProcessMutex();
    virtual ~ProcessMutex();

    ProcessMutex(ProcessMutex const&) = delete;
    ProcessMutex& operator=(ProcessMutex const&) = delete;

    virtual int Lock();
    virtual int Unlock();

protected:
    // A mutex of the given pthread mutex type.
    explicit ProcessMutex(int type);

private:
    void initialize(pthread_mutexattr_t const* attributes);

    pthread_mutex_t* m_mutex; // null when initialization failed
};

} // namespace Synchronization
} // namespace Common
