#include "common/OutputStreamToConsole.h"

#include <cstdio>

namespace Common
{

bool OutputStreamToConsole::Accept(char const* bytes, unsigned length)
{
    bool complete = std::fwrite(bytes, 1, length, stdout) == length;
    return std::fflush(stdout) == 0 && complete;
}

} // namespace Common
