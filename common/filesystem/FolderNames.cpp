#include "common/filesystem/FolderNames.h"

#include <dirent.h>
#include <sys/types.h>

// Built with 64-bit file offsets (see the top CMakeLists.txt): otherwise
// readdir fails with EOVERFLOW on entries of file systems with 64-bit inode
// numbers or directory offsets, and the listing ends early.
static_assert(sizeof(off_t) == 8 && sizeof(ino_t) == 8, "build with _FILE_OFFSET_BITS=64");

namespace Common
{
namespace Filesystem
{

bool _folderNames(string const& folder, list<string>& names)
{
    DIR* listing = ::opendir(folder.c_str());
    if (!listing)
        return false;
    while (struct dirent* entry = ::readdir(listing))
    {
        string name(entry->d_name);
        if (name != "." && name != "..")
            names.push_back(name);
    }
    ::closedir(listing);
    return true;
}

} // namespace Filesystem
} // namespace Common
