#include "common/filesystem/Path.h"

namespace Common
{
namespace Filesystem
{

string& _addSlash(string& path)
{
    if (path.empty() || path[path.size() - 1] != '/')
        path += "/";
    return path;
}

string _forwardSlashes(string const& path)
{
    return Replace(path, "\\", "/");
}

string _collapseSlashes(string const& path)
{
    // One pass of Replace turns "///" into "//", so repeat until none is left.
    string cleaned = path;
    while (cleaned.find("//") != string::npos)
        cleaned = Replace(cleaned, "//", "/");
    return cleaned;
}

} // namespace Filesystem
} // namespace Common
