#pragma once

#include "common/List.h"
#include "common/String.h"
#include "platform/FolderEntry.h"

namespace Common
{
namespace System
{

// The files the kernel shows under "/proc" and "/sys", read through the
// hardware seam: on the simulated server they come from its machine. `path`
// is absolute ("/sys/block/sda/size"); both calls are false when the entry is
// missing or unreadable, which happens whenever the kernel removes a device.
class KernelFiles
{
public:
    static bool read(string const& path, string& contents);
    // The entries of a folder, "." and ".." left out, in the kernel's order.
    static bool listFolder(string const& path, list<Platform::FolderEntry>& entries);
};

} // namespace System
} // namespace Common
