#include "common/filesystem/CopyThread.h"

#include "common/ScopedMutexLock.h"
#include "common/filesystem/CopyPlan.h"

namespace Common
{
namespace Filesystem
{

namespace
{
// A string with a buffer of its own: string copies share a reference count
// that is not thread-safe, so text never crosses threads by plain copy.
string unshared(string const& text)
{
    return string(text.c_str(), text.size());
}
} // namespace

CopyThread::CopyThread(string const& source, string const& destination)
    : m_source(unshared(source)), m_destination(unshared(destination)), m_running(true),
      m_stopping(false)
{
    m_status.totalFiles = 0;
    m_status.currentFile = 0;
    m_status.totalBytes = 0;
    m_status.currentByte = 0;
}

void CopyThread::Run()
{
    CopyPlan plan(m_source, m_destination);
    {
        Synchronization::ScopedMutexLock hold(m_lock);
        m_status.totalFiles = plan.totalFiles();
        m_status.totalBytes = plan.totalBytes();
    }
    plan.Perform(this);
    Synchronization::ScopedMutexLock hold(m_lock);
    m_running = false;
}

CopyThread::_COPY_STATUS CopyThread::status() const
{
    Synchronization::ScopedMutexLock hold(m_lock);
    _COPY_STATUS copy;
    copy.totalFiles = m_status.totalFiles;
    copy.currentFile = m_status.currentFile;
    copy.totalBytes = m_status.totalBytes;
    copy.currentByte = m_status.currentByte;
    copy.currentFilename = unshared(m_status.currentFilename);
    return copy;
}

bool CopyThread::isRunning() const
{
    Synchronization::ScopedMutexLock hold(m_lock);
    return m_running;
}

void CopyThread::Stop()
{
    Synchronization::ScopedMutexLock hold(m_lock);
    m_stopping = true;
}

bool CopyThread::proceed()
{
    Synchronization::ScopedMutexLock hold(m_lock);
    return !m_stopping;
}

void CopyThread::FileStarted(string const& source)
{
    Synchronization::ScopedMutexLock hold(m_lock);
    ++m_status.currentFile;
    m_status.currentFilename = unshared(source);
}

void CopyThread::BytesCopied(unsigned long long count)
{
    Synchronization::ScopedMutexLock hold(m_lock);
    m_status.currentByte += count;
}

} // namespace Filesystem
} // namespace Common
