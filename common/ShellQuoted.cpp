#include "common/ShellQuoted.h"

namespace Common
{

string shellQuoted(string const& text)
{
    return "'" + Replace(text, "'", "'\\''") + "'";
}

} // namespace Common
