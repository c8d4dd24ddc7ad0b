#include "common/OutputStream.h"

#include <cstdio>
#include <cstring>

namespace Common
{
namespace
{
template <class T> void writeNumber(OutputStream& out, char const* format, T value)
{
    char digits[32];
    int n = std::snprintf(digits, sizeof digits, format, value);
    if (n > 0)
        out.Accept(digits, static_cast<unsigned>(n));
}
} // namespace

OutputStream& OutputStream::operator<<(string const& text)
{
    Accept(text.c_str(), text.size());
    return *this;
}

OutputStream& OutputStream::operator<<(istring const& text)
{
    Accept(text.c_str(), text.size());
    return *this;
}

OutputStream& OutputStream::operator<<(char const* text)
{
    if (text)
        Accept(text, static_cast<unsigned>(std::strlen(text)));
    return *this;
}

OutputStream& OutputStream::operator<<(int value)
{
    writeNumber(*this, "%d", value);
    return *this;
}
OutputStream& OutputStream::operator<<(unsigned value)
{
    writeNumber(*this, "%u", value);
    return *this;
}
OutputStream& OutputStream::operator<<(long value)
{
    writeNumber(*this, "%ld", value);
    return *this;
}
OutputStream& OutputStream::operator<<(unsigned long value)
{
    writeNumber(*this, "%lu", value);
    return *this;
}
OutputStream& OutputStream::operator<<(long long value)
{
    writeNumber(*this, "%lld", value);
    return *this;
}
OutputStream& OutputStream::operator<<(unsigned long long value)
{
    writeNumber(*this, "%llu", value);
    return *this;
}

} // namespace Common
