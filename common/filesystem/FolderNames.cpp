#include "common/filesystem/FolderNames.h"

#include <dirent.h>

namespace Common
{
namespace Filesystem
{

bool _folderNames(string const& folder, list<string>& names)
{
    DIR* listing = ::opendir(folder.c_str());
    if (!listing)
        return false;
    // readdir64: the plain call fails on entries whose inode number does not
    // fit 32 bits, which would end the listing early in this 32-bit process.
    while (struct dirent64* entry = ::readdir64(listing))
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
