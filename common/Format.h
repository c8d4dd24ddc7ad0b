#pragma once

#include "common/String.h"

namespace Common
{

// printf-style formatting of a short text (numbers, addresses, dates) into a
// Common::string, through vsnprintf into a bounded stack buffer of 64 bytes.
// Longer output is cut at 63 bytes; callers format only short fixed shapes.
string formatShort(char const* format, ...) __attribute__((format(printf, 1, 2)));

} // namespace Common
