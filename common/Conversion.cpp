// Numbers, hexadecimal text, addresses, dates and byte order.
// Base64 and UTF-8 cleaning are in TextEncoding.cpp.
#include "common/Conversion.h"

#include "common/Format.h"

#include <cstdio>
#include <cstring>

namespace Conversion
{
namespace
{
// Value of one character by the unvalidated rule of hexStringToInt. Unsigned
// arithmetic: only the low 8 bits of the final sum matter, and they are the
// same whether the byte is read as signed or unsigned.
unsigned hexValueUnchecked(char c)
{
    unsigned u = static_cast<unsigned char>(c);
    if (u >= 'a' && u <= 'z')
        return u - 'a' + 10;
    if (u >= 'A' && u <= 'Z')
        return u - 'A' + 10;
    return u - '0';
}

bool hexDigit(char c, unsigned& value)
{
    if (c >= '0' && c <= '9')
        value = static_cast<unsigned>(c - '0');
    else if (c >= 'a' && c <= 'f')
        value = static_cast<unsigned>(c - 'a' + 10);
    else if (c >= 'A' && c <= 'F')
        value = static_cast<unsigned>(c - 'A' + 10);
    else
        return false;
    return true;
}

unsigned greatestCommonDivisor(unsigned a, unsigned b)
{
    while (b != 0)
    {
        unsigned r = a % b;
        a = b;
        b = r;
    }
    return a;
}
} // namespace

unsigned char clampPercentage(unsigned char const& p)
{
    static const int adjust[5] = {0, -1, -2, +2, +1};
    return static_cast<unsigned char>(p + adjust[p % 5]);
}

unsigned int leastCommonMultiple(unsigned int const& a, unsigned int const& b)
{
    unsigned x = a ? a : 1;
    unsigned y = b ? b : 1;
    return x / greatestCommonDivisor(x, y) * y;
}

Common::string timeToString(unsigned char const*)
{
    return Common::string("0:0:0");
}

int xtoi(Common::string const& s, unsigned int& out)
{
    unsigned n = static_cast<unsigned>(std::strlen(s.c_str()));
    if (n == 0)
        return XTOI_EMPTY;
    if (n > 8)
        return XTOI_TOO_LONG;
    out = 0;
    unsigned weight = 1;
    for (unsigned i = n; i-- > 0; weight <<= 4)
    {
        unsigned digit = 0;
        if (!hexDigit(s[i], digit))
            return XTOI_NOT_HEX;
        out += digit * weight;
    }
    return XTOI_OK;
}

unsigned char hexPairValue(char high, char low)
{
    return static_cast<unsigned char>(hexValueUnchecked(high) * 16 + hexValueUnchecked(low));
}

unsigned char hexStringToInt(Common::string const& s)
{
    // For a string shorter than 2, operator[] yields the terminating NUL.
    return hexPairValue(s[0], s[1]);
}

Common::string stringToArray(Common::string const& s)
{
    unsigned size = s.size();
    char* bytes = nullptr;
    Common::string result = Common::string::uninitialized((size + 1) / 2, bytes);
    for (unsigned i = 0; i < size; i += 2)
        *bytes++ = static_cast<char>(hexPairValue(s[i], s[i + 1])); // s[size] is the NUL
    return result;
}

unsigned int stringToIndex(char const* const* first, char const* const* last, char const* s)
{
    for (char const* const* entry = first; entry != last; ++entry)
    {
        if (std::strcmp(*entry, s) == 0)
            return static_cast<unsigned>(entry - first);
    }
    return static_cast<unsigned>(last - first);
}

Common::string toString(unsigned char const& value)
{
    return Common::formatShort("%u", static_cast<unsigned>(value));
}

Common::string toString(unsigned short const& value)
{
    return Common::formatShort("%u", static_cast<unsigned>(value));
}

Common::string toString(unsigned int const& value)
{
    return Common::formatShort("%u", value);
}

Common::string toString(unsigned long const& value)
{
    return Common::formatShort("%lu", value);
}

Common::string toString(unsigned long long const& value)
{
    return Common::formatShort("%llu", value);
}

Common::string toString(short const& value)
{
    return Common::formatShort("%d", static_cast<int>(value));
}

Common::string toString(int const& value)
{
    return Common::formatShort("%d", value);
}

Common::string toString(long const& value)
{
    return Common::formatShort("%ld", value);
}

Common::string toString(long long const& value)
{
    return Common::formatShort("%lld", value);
}

Common::string MacToString(unsigned char const* mac)
{
    return Common::formatShort("%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2], mac[3],
                               mac[4], mac[5]);
}

Common::string toIpV4String(unsigned char const* b)
{
    return Common::formatShort("%d.%d.%d.%d", b[0], b[1], b[2], b[3]);
}

Common::string toIpV4String(unsigned int address)
{
    unsigned char bytes[4] = {static_cast<unsigned char>(address & 0xFF),
                              static_cast<unsigned char>(address >> 8 & 0xFF),
                              static_cast<unsigned char>(address >> 16 & 0xFF),
                              static_cast<unsigned char>(address >> 24)};
    return toIpV4String(bytes);
}

bool ipToNumber(unsigned char* out, Common::string const& s)
{
    int fields[4] = {0, 0, 0, 0};
    int parsed =
        std::sscanf(s.c_str(), "%d.%d.%d.%d", &fields[0], &fields[1], &fields[2], &fields[3]);
    bool valid = parsed == 4;
    for (int i = 0; i < 4; ++i)
    {
        out[i] = static_cast<unsigned char>(fields[i]);
        if (out[i] != fields[i])
            valid = false;
    }
    return valid;
}

Common::string dateToString(unsigned char const* b)
{
    // "%02u" puts a "0" before exactly the values <= 9.
    return Common::formatShort("%u-%02u-%02u", static_cast<unsigned>(b[0]) * 256 + b[1],
                               static_cast<unsigned>(b[2]), static_cast<unsigned>(b[3]));
}

Common::string dateToString(unsigned int date)
{
    unsigned char bytes[4] = {
        static_cast<unsigned char>(date >> 24), static_cast<unsigned char>(date >> 16 & 0xFF),
        static_cast<unsigned char>(date >> 8 & 0xFF), static_cast<unsigned char>(date & 0xFF)};
    return dateToString(bytes);
}

bool isHostLittleEndian()
{
    unsigned int probe = 1;
    unsigned char first = 0;
    std::memcpy(&first, &probe, 1);
    return first == 1;
}

} // namespace Conversion
