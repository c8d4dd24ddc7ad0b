#pragma once

#include "common/String.h"

namespace Common
{
namespace Filesystem
{

// Path text helpers shared by the file-system functions; internal to this
// module. They work on the text only and never touch the file system.

// Appends "/" unless the path already ends with one (the empty path becomes
// "/"). Changes `path` and returns it.
string& _addSlash(string& path);

// Every backslash turned into "/".
string _forwardSlashes(string const& path);

// Runs of "/" shortened to one, so that the result holds no "//".
string _collapseSlashes(string const& path);

} // namespace Filesystem
} // namespace Common
