#pragma once

#include "common/List.h"
#include "common/String.h"

namespace Common
{
namespace Filesystem
{

// Internal to this module. The names of every entry of `folder` (no folder in
// front; "." and ".." left out), in the order the folder lists them, appended
// to `names`. False when the folder cannot be listed.
bool _folderNames(string const& folder, list<string>& names);

} // namespace Filesystem
} // namespace Common
