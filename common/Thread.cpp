#include "common/Thread.h"

#include <new>

namespace Common
{
namespace Synchronization
{
namespace
{
void* thread_proxy(void* work)
{
    static_cast<Threadable*>(work)->Run();
    return nullptr;
}
} // namespace

Thread::Thread(Threadable& work) : m_handle(new (std::nothrow) pthread_t)
{
    if (m_handle && pthread_create(m_handle, nullptr, thread_proxy, &work) != 0)
    {
        delete m_handle;
        m_handle = nullptr;
    }
}

Thread::~Thread()
{
    Join();
}

void Thread::Join()
{
    if (m_handle == nullptr)
        return;
    pthread_join(*m_handle, nullptr);
    delete m_handle;
    m_handle = nullptr;
}

bool Thread::operator==(Thread const& other) const
{
    if (this == &other)
        return true;
    return m_handle && other.m_handle && pthread_equal(*m_handle, *other.m_handle);
}

} // namespace Synchronization
} // namespace Common
