#pragma once

#include "common/String.h"

namespace Common
{
namespace Platform
{

// One entry of a folder the kernel shows under "/proc" or "/sys".
struct FolderEntry
{
    string name;
    // The entry is a folder itself (not a link to one).
    bool folder;
    // The entry is a symbolic link: sysfs links point back up the tree, so a
    // walk that follows them never ends.
    bool symbolicLink;
};

} // namespace Platform
} // namespace Common
