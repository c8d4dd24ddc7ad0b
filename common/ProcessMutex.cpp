#include "common/ProcessMutex.h"

#include <cerrno>

namespace Common
{
namespace Synchronization
{

ProcessMutex::ProcessMutex() : m_mutex(nullptr)
{
    initialize(nullptr);
}

ProcessMutex::ProcessMutex(int type) : m_mutex(nullptr)
{
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0)
        return;
    if (pthread_mutexattr_settype(&attributes, type) == 0)
        initialize(&attributes);
    pthread_mutexattr_destroy(&attributes);
}

void ProcessMutex::initialize(pthread_mutexattr_t const* attributes)
{
    m_mutex = new pthread_mutex_t;
    if (pthread_mutex_init(m_mutex, attributes) == 0)
        return;
    delete m_mutex;
    m_mutex = nullptr;
}

ProcessMutex::~ProcessMutex()
{
    if (m_mutex == nullptr)
        return;
    pthread_mutex_destroy(m_mutex);
    delete m_mutex;
}

int ProcessMutex::Lock()
{
    return m_mutex ? pthread_mutex_lock(m_mutex) : EINVAL;
}

int ProcessMutex::Unlock()
{
    return m_mutex ? pthread_mutex_unlock(m_mutex) : EINVAL;
}

} // namespace Synchronization
} // namespace Common
