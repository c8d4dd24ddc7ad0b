#pragma once

#include "common/String.h"

namespace Common
{

// `text` as one word of a POSIX shell command line: in single quotes, each
// single quote inside written as '\''. No character of `text` (blanks, ";",
// "$( )", backticks, line breaks) is then read by the shell as anything but
// part of that word. Use it for every piece of a command line that comes
// from a request or a file name; text that is meant to be shell syntax (the
// arguments of system.nsp "Run") is the only exception.
string shellQuoted(string const& text);

} // namespace Common
