#include "common/filesystem/CopyPlan.h"

#include "common/RegularFile.h"
#include "common/WriteAll.h"
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
    struct stat status;
    return ::stat(path.c_str(), &status) == 0;
}

bool isFolder(string const& path)
{
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Copies `length` bytes at `offset` of `from` to the same place in `to`
// through `buffer`, reporting each chunk. A source that ends early ends the
// extent there.
bool copyExtent(int from, int to, off_t offset, off_t length, char* buffer, CopyProgress* progress)
{
    if (::lseek(from, offset, SEEK_SET) != offset || ::lseek(to, offset, SEEK_SET) != offset)
        return false;
    while (length > 0)
    {
        size_t want = length < static_cast<off_t>(kChunk) ? static_cast<size_t>(length) : kChunk;
        ssize_t got = ::read(from, buffer, want);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            return true;
        if (!writeAll(to, buffer, static_cast<unsigned>(got)))
            return false;
        length -= got;
        if (progress)
            progress->BytesCopied(static_cast<unsigned long long>(got));
    }
    return true;
}

// Copies the first `size` bytes of `from` into `to`. Holes of a sparse source
// stay holes (the target is only sized over them) and count as copied; a file
// system that cannot tell holes has one extent of data.
bool copyBytes(int from, int to, off_t size, char* buffer, CopyProgress* progress)
{
    for (off_t at = 0; at < size;)
    {
        off_t data = ::lseek(from, at, SEEK_DATA);
        if (data < 0)
            data = errno == ENXIO ? size : at;
        if (data > size)
            data = size;
        off_t hole = data < size ? ::lseek(from, data, SEEK_HOLE) : size;
        if (hole < data || hole > size)
            hole = size;
        if (progress && data > at)
            progress->BytesCopied(static_cast<unsigned long long>(data - at));
        if (!copyExtent(from, to, data, hole - data, buffer, progress))
            return false;
        at = hole;
    }
    return ::ftruncate(to, size) == 0;
}

// True when `path` names the file whose status is `opened`.
bool isSameFile(string const& path, struct stat const& opened)
{
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && status.st_dev == opened.st_dev &&
           status.st_ino == opened.st_ino;
}

// Copies one regular file, replacing `target`; the target gets the source's
// permission bits. Refuses when `target` is the source itself, which opening
// it for writing would empty.
bool copyFile(string const& source, string const& target, CopyProgress* progress)
{
    int from = openRegularFile(source, O_RDONLY);
    if (from < 0)
        return false;
    struct stat opened;
    bool copied = false;
    if (::fstat(from, &opened) == 0 && !isSameFile(target, opened))
    {
        int to = openRegularFile(target, O_WRONLY | O_CREAT | O_TRUNC);
        char* buffer = new (std::nothrow) char[kChunk];
        copied = to >= 0 && buffer && copyBytes(from, to, opened.st_size, buffer, progress) &&
                 ::fchmod(to, opened.st_mode & 0777) == 0;
        delete[] buffer;
        if (to >= 0 && ::close(to) != 0)
            copied = false;
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
    struct stat status;
    if (::stat(source.c_str(), &status) != 0)
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
