#include "common/system/KernelFiles.h"

#include "platform/Hardware.h"

namespace Common
{
namespace System
{

bool KernelFiles::read(string const& path, string& contents)
{
    return Platform::hardware().readFile(path.c_str(), contents);
}

bool KernelFiles::listFolder(string const& path, list<Platform::FolderEntry>& entries)
{
    return Platform::hardware().listFolder(path.c_str(), entries);
}

} // namespace System
} // namespace Common
