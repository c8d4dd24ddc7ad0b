#include "extension/InterimThread.h"

namespace Interim
{
namespace
{
extern "C" void* threadProxy(void* work)
{
    static_cast<Threadable*>(work)->Run();
    return nullptr;
}
} // namespace

Thread::Thread(Threadable& work) : m_handle(), m_running(false)
{
    m_running = pthread_create(&m_handle, nullptr, &threadProxy, &work) == 0;
}

Thread::~Thread()
{
    Join();
}

void Thread::Join()
{
    if (!m_running)
        return;
    pthread_join(m_handle, nullptr);
    m_running = false;
}

} // namespace Interim
