#include "common/filesystem/CopyRegistry.h"

#include "common/Thread.h"

namespace Common
{
namespace Filesystem
{

CopyRegistry::~CopyRegistry()
{
    for (map<string, CopyThread*>::iterator copy = m_copies.begin(); copy != m_copies.end(); ++copy)
        copy->second->Stop();
    for (map<string, Synchronization::Thread*>::iterator thread = m_threads.begin();
         thread != m_threads.end(); ++thread)
    {
        thread->second->Join();
        delete thread->second;
    }
    for (map<string, CopyThread*>::iterator copy = m_copies.begin(); copy != m_copies.end(); ++copy)
        delete copy->second;
}

bool CopyRegistry::Start(string const& key, string const& source, string const& destination)
{
    if (m_copies.find(key) != m_copies.end())
        return false;
    CopyThread* copy = new CopyThread(source, destination);
    Synchronization::Thread* thread = new Synchronization::Thread(*copy);
    if (!thread->running())
    {
        delete thread;
        delete copy;
        return false;
    }
    m_copies.insert(pair<string, CopyThread*>(key, copy));
    m_threads.insert(pair<string, Synchronization::Thread*>(key, thread));
    return true;
}

bool CopyRegistry::progress(string const& key, CopyThread::_COPY_STATUS& status, bool& running)
{
    map<string, CopyThread*>::iterator copy = m_copies.find(key);
    if (copy == m_copies.end())
        return false;
    // Asked before the status: once the copy is seen ended, the status that
    // follows is its final one.
    running = copy->second->isRunning();
    status = copy->second->status();
    if (running)
        return true;

    Synchronization::Thread*& thread = m_threads[key];
    thread->Join();
    delete thread;
    delete copy->second;
    m_threads.erase(key);
    m_copies.erase(key);
    return true;
}

} // namespace Filesystem
} // namespace Common
