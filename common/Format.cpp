#include "common/Format.h"

#include <cstdarg>
#include <cstdio>

namespace Common
{

string formatShort(char const* format, ...)
{
    char buffer[64];
    va_list arguments;
    va_start(arguments, format);
    int n = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    va_end(arguments);
    if (n < 0)
        return string();
    if (static_cast<unsigned>(n) >= sizeof buffer)
        n = sizeof buffer - 1;
    return string(buffer, static_cast<unsigned>(n));
}

} // namespace Common
