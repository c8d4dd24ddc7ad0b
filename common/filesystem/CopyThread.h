#pragma once

#include "common/RecursiveProcessMutex.h"
#include "common/String.h"
#include "common/Threadable.h"
#include "common/filesystem/CopyProgress.h"

namespace Common
{
namespace Filesystem
{

// A copy (see CopyPlan for what source and destination mean) that a
// Synchronization::Thread runs in the background while other threads read
// its progress. Run first counts the files and bytes to copy, then copies
// file by file.
//
// status, isRunning and Stop may be called from any thread; the object must
// outlive the Thread running it (join the Thread before destroying it).
class CopyThread : public Synchronization::Threadable, private CopyProgress
{
public:
    // Progress of the copy. Counts are zero until the counting pass is done;
    // currentFile is the number of the file being copied (1 for the first),
    // currentByte the bytes written so far over all files, currentFilename
    // the source path of the file being copied. When the copy has ended,
    // currentByte is below totalBytes if a file failed or the copy was
    // stopped.
    struct _COPY_STATUS
    {
        unsigned long long totalFiles;
        unsigned long long currentFile;
        unsigned long long totalBytes;
        unsigned long long currentByte;
        string currentFilename;
    };

    CopyThread(string const& source, string const& destination);

    // The thread's body: counts, then copies.
    void Run() override;

    // A copy of the progress taken under the lock; its file name shares no
    // buffer with the copying thread, so the caller may keep it freely.
    _COPY_STATUS status() const;
    // True from construction until Run has finished.
    bool isRunning() const;
    // Ends the copy before its next file or folder (a file being copied is
    // finished first). Stopping before Run starts copies nothing.
    void Stop();

private:
    bool proceed() override;
    void FileStarted(string const& source) override;
    void BytesCopied(unsigned long long count) override;

    string m_source;
    string m_destination;
    mutable Synchronization::RecursiveProcessMutex m_lock;
    _COPY_STATUS m_status;
    bool m_running;
    bool m_stopping;
};

} // namespace Filesystem
} // namespace Common
