#include "common/filesystem/CopyPlan.h"

#include "common/OutputStreamToFile.h"
#include "common/filesystem/CopyProgress.h"
#include "common/filesystem/Filesystem.h"
#include "common/filesystem/FolderNames.h"
#include "common/filesystem/Path.h"
#include "common/filesystem/Wildcard.h"

#include <cerrno>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <unistd.h>

namespace Common
{
namespace Filesystem
{

namespace
{
typedef pair<unsigned long long, unsigned long long> Identity;

const unsigned kChunk = 64 * 1024;

// Slashes cleaned and a trailing "/" dropped (the root stays "/").
string trimmed(string const& path)
{
    string cleaned = _collapseSlashes(_forwardSlashes(path));
    if (cleaned.size() > 1 && cleaned[cleaned.size() - 1] == '/')
        cleaned = cleaned.substr(0, cleaned.size() - 1);
    return cleaned;
}

string joined(string const& folder, string const& name)
{
    return folder == "/" ? "/" + name : folder + "/" + name;
}

// The folder part of a path with at least one "/" ("/a" gives "/").
string folderPart(string const& path, unsigned slash)
{
    return slash == 0 ? string("/") : path.substr(0, slash);
}

bool exists(string const& path)
{
    struct stat64 status;
    return ::stat64(path.c_str(), &status) == 0;
}

bool isFolder(string const& path)
{
    struct stat64 status;
    return ::stat64(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Copies the bytes of `from` into `to` through `buffer`, reporting each chunk.
bool copyBytes(int from, OutputStream& to, char* buffer, CopyProgress* progress)
{
    for (;;)
    {
        ssize_t got = ::read(from, buffer, kChunk);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            return true;
        if (!to.Accept(buffer, static_cast<unsigned>(got)))
            return false;
        if (progress)
            progress->BytesCopied(static_cast<unsigned>(got));
    }
}

// True when `path` names the file whose status is `opened`.
bool isSameFile(string const& path, struct stat64 const& opened)
{
    struct stat64 status;
    return ::stat64(path.c_str(), &status) == 0 && status.st_dev == opened.st_dev &&
           status.st_ino == opened.st_ino;
}

// Copies one regular file, replacing `target`; the target gets the source's
// permission bits. Refuses when `target` is the source itself, which opening
// it for writing would empty.
bool copyFile(string const& source, string const& target, CopyProgress* progress)
{
    int from = ::open(source.c_str(), O_RDONLY | O_LARGEFILE | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (from < 0)
        return false;
    struct stat64 opened;
    bool copied = false;
    if (::fstat64(from, &opened) == 0 && S_ISREG(opened.st_mode) && !isSameFile(target, opened))
    {
        OutputStreamToFile to(target, false);
        char* buffer = new (std::nothrow) char[kChunk];
        copied = to.isOpen() && buffer && copyBytes(from, to, buffer, progress) &&
                 ::chmod(target.c_str(), opened.st_mode & 0777) == 0;
        delete[] buffer;
    }
    ::close(from);
    return copied;
}
} // namespace

CopyPlan::CopyPlan(string const& source, string const& destination)
    : m_totalFiles(0), m_totalBytes(0), m_complete(true)
{
    string from = trimmed(source);
    string to = trimmed(destination);
    if (from.empty() || to.empty())
    {
        m_complete = false;
        return;
    }
    _MATCH match;
    if (_isWild(from, match))
    {
        planMatches(from, match, to);
        return;
    }
    if (!exists(from))
    {
        m_complete = false;
        return;
    }

    string target = to;
    if (isFolder(to))
    {
        string name = from.substr(from.rfind('/') + 1);
        if (name.empty() || name == "." || name == "..")
        {
            m_complete = false;
            return;
        }
        target = joined(to, name);
    }
    else
    {
        unsigned slash = to.rfind('/');
        if (slash != string::npos)
            planFolderFor(folderPart(to, slash));
    }
    planEntry(from, target);
}

void CopyPlan::planMatches(string const& pattern, _MATCH const& match, string const& destination)
{
    string folder = folderPart(pattern, pattern.rfind('/'));
    list<string> names;
    if (!_folderNames(folder, names))
    {
        m_complete = false;
        return;
    }
    bool matched = false;
    for (list<string>::iterator name = names.begin(); name != names.end(); ++name)
    {
        if (!_isMatch(*name, match))
            continue;
        if (!matched)
            planFolderFor(destination);
        matched = true;
        planEntry(joined(folder, *name), joined(destination, *name));
    }
    if (!matched)
        m_complete = false;
}

// Makes sure that `path` will be a folder before anything is copied into it.
void CopyPlan::planFolderFor(string const& path)
{
    if (!isFolder(path))
        addStep(true, string(), path, 0);
}

void CopyPlan::planEntry(string const& source, string const& target)
{
    struct stat64 status;
    if (::stat64(source.c_str(), &status) != 0)
        m_complete = false;
    else if (S_ISREG(status.st_mode))
    {
        addStep(false, source, target, status.st_size);
        ++m_totalFiles;
        m_totalBytes += status.st_size;
    }
    else if (S_ISDIR(status.st_mode))
        planFolder(source, target, status.st_dev, status.st_ino);
    else
        m_complete = false;
}

void CopyPlan::planFolder(string const& source, string const& target, unsigned long long device,
                          unsigned long long inode)
{
    Identity identity(device, inode);
    for (list<Identity>::iterator walking = m_walking.begin(); walking != m_walking.end();
         ++walking)
        if (walking->first == identity.first && walking->second == identity.second)
            return;

    addStep(true, source, target, 0);
    list<string> names;
    if (!_folderNames(source, names))
    {
        m_complete = false;
        return;
    }
    m_walking.insert(m_walking.begin(), identity);
    for (list<string>::iterator name = names.begin(); name != names.end(); ++name)
        planEntry(joined(source, *name), joined(target, *name));
    m_walking.erase(m_walking.begin());
}

void CopyPlan::addStep(bool folder, string const& source, string const& target,
                       unsigned long long size)
{
    _COPY_STEP step;
    step.folder = folder;
    step.source = source;
    step.target = target;
    step.size = size;
    m_steps.push_back(step);
}

bool CopyPlan::Perform(CopyProgress* progress) const
{
    bool succeeded = m_complete;
    for (list<_COPY_STEP>::const_iterator step = m_steps.begin(); step != m_steps.end(); ++step)
    {
        if (progress && !progress->proceed())
            return false;
        if (step->folder)
        {
            createDirectory(step->target);
            if (!isFolder(step->target))
                succeeded = false;
            continue;
        }
        if (progress)
            progress->FileStarted(step->source);
        if (!copyFile(step->source, step->target, progress))
            succeeded = false;
    }
    return succeeded;
}

} // namespace Filesystem
} // namespace Common
