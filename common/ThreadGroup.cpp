#include "common/ThreadGroup.h"

namespace Common
{
namespace Synchronization
{

void ThreadGroup::Add(Thread* thread)
{
    if (thread)
        m_threads.push_back(thread);
}

void ThreadGroup::Remove(Thread* thread)
{
    for (list<Thread*>::iterator it = m_threads.begin(); it != m_threads.end();)
        it = *it == thread ? m_threads.erase(it) : ++it;
}

void ThreadGroup::JoinAll()
{
    for (list<Thread*>::iterator it = m_threads.begin(); it != m_threads.end(); ++it)
        (*it)->Join();
}

} // namespace Synchronization
} // namespace Common
