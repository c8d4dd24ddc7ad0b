#pragma once

#include "common/List.h"
#include "common/String.h"

namespace Common
{
namespace Filesystem
{

// A parsed "*" wildcard over one file name: "pre*mid1*mid2*suf" holds the
// prefix "pre", the middle texts "mid1" and "mid2" and the suffix "suf".
struct _MATCH
{
    string prefix;
    list<string> middle;
    string suffix;
};

// Internal to this module (used by the copies). True when the last name of
// `pattern` holds a "*"; `match` is then filled from that last name. A pattern
// without any "/" is never a wildcard ("*.txt" is false, "./*.txt" is true).
// When false, `match` is left untouched.
bool _isWild(string pattern, _MATCH& match);

// True when `name` (a bare file name, no folder) matches `match`. The rules are
// lenient on purpose: the prefix must start the name, the first occurrence of
// the suffix must end it (so "a.txt.txt" does not match "*.txt"), and each
// middle text must occur at or behind the prefix's length plus the lengths of
// the middle texts before it, wherever the earlier ones were found.
bool _isMatch(string const& name, _MATCH const& match);

} // namespace Filesystem
} // namespace Common
