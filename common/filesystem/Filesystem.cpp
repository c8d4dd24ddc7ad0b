#include "common/filesystem/Filesystem.h"

#include "common/InputStreamFromFile.h"
#include "common/filesystem/FolderNames.h"
#include "common/filesystem/Path.h"

#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Common
{
namespace Filesystem
{

namespace
{
// Mode bits that the listings test one by one, rather than the file type.
const unsigned kRegularFileBit = 0x8000;
const unsigned kFolderBit = 0x4000;

// Names of the folder's entries whose mode (links followed) has `bit` set.
list<string> listEntries(string folder, unsigned bit)
{
    folder = _collapseSlashes(_addSlash(folder));
    list<string> names;
    _folderNames(folder, names);
    list<string> chosen;
    for (list<string>::iterator name = names.begin(); name != names.end(); ++name)
    {
        struct stat status;
        if (::stat((folder + *name).c_str(), &status) == 0 && (status.st_mode & bit))
            chosen.push_back(*name);
    }
    return chosen;
}

// The folder holding the last name of `path` (which ends with "/"), built
// from its "/"-separated pieces less the last name and the empty piece behind
// the final "/": "/a/b/" gives "/a/", "x/" gives the empty parent.
string parentOf(string const& path)
{
    list<string> pieces = path.split("/");
    unsigned keep = pieces.size() - 2;
    string parent;
    list<string>::iterator piece = pieces.begin();
    for (unsigned index = 0; index < keep; ++index, ++piece)
        parent += *piece + "/";
    return parent;
}
} // namespace

bool getContents(string const& path, string& text)
{
    return InputStreamFromFile(path).readBuffer(text);
}

bool isFile(string const& path)
{
    int descriptor =
        ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    ::close(descriptor);
    return true;
}

bool isDirectory(string const& path)
{
    if (path.empty())
        return true;
    DIR* listing = ::opendir(path.c_str());
    if (!listing)
        return false;
    ::closedir(listing);
    return true;
}

bool isSymbolicLink(string const& path)
{
    char target[1023];
    return ::readlink(path.c_str(), target, sizeof target) >= 0;
}

long long getFileSize(string const& path)
{
    struct stat status;
    if (::stat(path.c_str(), &status) != 0)
        return 0;
    return status.st_size;
}

list<string> getFileList(string folder)
{
    return listEntries(folder, kRegularFileBit);
}

list<string> getDirectoryList(string folder)
{
    return listEntries(folder, kFolderBit);
}

bool deleteFile(string path)
{
    return std::remove(_collapseSlashes(path).c_str()) == 0;
}

bool deleteDirectory(string path)
{
    return ::rmdir(_collapseSlashes(_addSlash(path)).c_str()) == 0;
}

bool remove(string path)
{
    path = _collapseSlashes(_forwardSlashes(path));
    if (isFile(path))
        return deleteFile(path);

    list<string> folders = getDirectoryList(path);
    for (list<string>::iterator name = folders.begin(); name != folders.end(); ++name)
        remove(path + "/" + *name + "/");
    list<string> files = getFileList(path);
    for (list<string>::iterator name = files.begin(); name != files.end(); ++name)
        deleteFile(path + "/" + *name);
    return deleteDirectory(path);
}

bool createDirectory(string path)
{
    path = _collapseSlashes(_forwardSlashes(_addSlash(path)));
    if (path == "/")
        return true;

    string parent = parentOf(path);
    if (!isDirectory(parent))
    {
        // createDirectory reports true even when mkdir failed, so the parent
        // is tested again: recursing while it is still missing would never end.
        if (!createDirectory(parent) || !isDirectory(parent))
            return false;
    }
    ::mkdir(path.c_str(), 0755);
    return true;
}

} // namespace Filesystem
} // namespace Common
