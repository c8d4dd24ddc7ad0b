#pragma once

#include "common/String.h"

namespace Common
{
namespace Filesystem
{

// Copies a file, a folder tree, or the matches of a "*" wildcard in the
// source's last name, before returning. What source and destination mean is
// described at CopyPlan. True when everything was copied; false when the
// source is missing, a wildcard matched nothing, or any entry failed (the
// rest is still copied).
bool copy(string source, string destination);

} // namespace Filesystem
} // namespace Common
