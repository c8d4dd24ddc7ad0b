#pragma once

#include <pthread.h>

namespace Common
{
namespace Synchronization
{

// A lock between the threads of this process for state at namespace scope:
// the answers computed on first use and kept for the life of the process (the
// "supported" tests) and hardware sequences of several steps, which the
// start-up job and a page request may reach at the same moment.
//
// Declare it at namespace scope: it is ready before any code of the module
// runs and is never destroyed, so the start-up job can still use it while
// the module's statics go. It is recursive: the thread computing an answer
// may ask for it again (the NVRAM probe does) without deadlock, and then sees
// the half-built state of that moment, so keep such re-entry deliberate.
// Unlike ProcessMutex it needs no allocation and cannot fail to exist.
// Never hold it while waiting for another thread that might take it.
class StaticMutex
{
public:
    constexpr StaticMutex() = default;
    StaticMutex(StaticMutex const&) = delete;
    StaticMutex& operator=(StaticMutex const&) = delete;

    // Runs `body` with the lock held and returns what it returns.
    template <class Body> auto holding(Body body) -> decltype(body())
    {
        struct Held
        {
            explicit Held(pthread_mutex_t& mutex) : m_mutex(mutex) { pthread_mutex_lock(&m_mutex); }
            ~Held() { pthread_mutex_unlock(&m_mutex); }
            pthread_mutex_t& m_mutex;
        } held(m_mutex);
        return body();
    }

private:
    pthread_mutex_t m_mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
};

} // namespace Synchronization
} // namespace Common
