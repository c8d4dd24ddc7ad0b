// Base64 (RFC 4648) and UTF-8 cleaning.
#include "common/Conversion.h"

namespace
{
char const ALPHABET[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Value 0-63 of a base64 character; the caller has checked isBase64.
unsigned base64Value(char c)
{
    if (c >= 'A' && c <= 'Z')
        return static_cast<unsigned>(c - 'A');
    if (c >= 'a' && c <= 'z')
        return static_cast<unsigned>(c - 'a' + 26);
    if (c >= '0' && c <= '9')
        return static_cast<unsigned>(c - '0' + 52);
    return c == '+' ? 62u : 63u;
}

// Number of continuation bytes a lead byte announces, or -1 when the byte
// cannot start a multi-byte sequence (continuation bytes, 0xFE, 0xFF).
int continuationCount(unsigned char lead)
{
    if ((lead & 0xE0) == 0xC0)
        return 1;
    if ((lead & 0xF0) == 0xE0)
        return 2;
    if ((lead & 0xF8) == 0xF0)
        return 3;
    if ((lead & 0xFC) == 0xF8)
        return 4;
    if ((lead & 0xFE) == 0xFC)
        return 5;
    return -1;
}

bool isContinuation(unsigned char c)
{
    return (c & 0xC0) == 0x80;
}

// How many bytes from `at` (of `left` remaining, left >= 1) are kept: 1 for
// a byte below 0x80, the whole sequence for a lead byte followed by all its
// continuation bytes, 0 when the byte is dropped.
unsigned keptSequence(unsigned char const* at, unsigned left)
{
    if (at[0] < 0x80)
        return 1;
    int more = continuationCount(at[0]);
    if (more < 0 || static_cast<unsigned>(more) >= left)
        return 0;
    for (int k = 1; k <= more; ++k)
    {
        if (!isContinuation(at[k]))
            return 0;
    }
    return static_cast<unsigned>(more) + 1;
}
} // namespace

Common::string BASE64_CHARACTERS(ALPHABET);

namespace Common
{
bool isBase64(int c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '/';
}
} // namespace Common

namespace Conversion
{

Common::string toValidUTF8(Common::string const& s)
{
    unsigned size = s.size();
    unsigned char const* in = reinterpret_cast<unsigned char const*>(s.c_str());
    unsigned length = 0;
    for (unsigned i = 0; i < size;)
    {
        unsigned run = keptSequence(in + i, size - i);
        length += run;
        i += run ? run : 1;
    }
    char* out = nullptr;
    Common::string result = Common::string::uninitialized(length, out);
    for (unsigned i = 0; i < size;)
    {
        unsigned run = keptSequence(in + i, size - i);
        for (unsigned k = 0; k < run; ++k)
            *out++ = static_cast<char>(in[i + k]);
        i += run ? run : 1; // a dropped byte: what follows is judged on its own
    }
    return result;
}

Common::string base64Encode(Common::string const& bytes)
{
    unsigned size = bytes.size();
    unsigned char const* in = reinterpret_cast<unsigned char const*>(bytes.c_str());
    char* out = nullptr;
    Common::string result = Common::string::uninitialized((size + 2) / 3 * 4, out);
    unsigned i = 0;
    for (; i + 3 <= size; i += 3)
    {
        unsigned group =
            static_cast<unsigned>(in[i]) << 16 | static_cast<unsigned>(in[i + 1]) << 8 | in[i + 2];
        *out++ = ALPHABET[group >> 18 & 0x3F];
        *out++ = ALPHABET[group >> 12 & 0x3F];
        *out++ = ALPHABET[group >> 6 & 0x3F];
        *out++ = ALPHABET[group & 0x3F];
    }
    unsigned left = size - i;
    if (left > 0)
    {
        unsigned group = static_cast<unsigned>(in[i]) << 16;
        if (left == 2)
            group |= static_cast<unsigned>(in[i + 1]) << 8;
        *out++ = ALPHABET[group >> 18 & 0x3F];
        *out++ = ALPHABET[group >> 12 & 0x3F];
        *out++ = left == 2 ? ALPHABET[group >> 6 & 0x3F] : '=';
        *out++ = '=';
    }
    return result;
}

Common::string base64Decode(Common::string const& text)
{
    unsigned size = text.size();
    unsigned usable = 0;
    while (usable < size && Common::isBase64(text[usable]))
        ++usable; // '=' and any other character stop here
    unsigned full = usable / 4;
    unsigned rest = usable % 4;
    unsigned length = full * 3 + (rest >= 2 ? rest - 1 : 0);
    char* out = nullptr;
    Common::string result = Common::string::uninitialized(length, out);
    unsigned i = 0;
    for (unsigned g = 0; g < full; ++g, i += 4)
    {
        unsigned group = base64Value(text[i]) << 18 | base64Value(text[i + 1]) << 12 |
                         base64Value(text[i + 2]) << 6 | base64Value(text[i + 3]);
        *out++ = static_cast<char>(group >> 16 & 0xFF);
        *out++ = static_cast<char>(group >> 8 & 0xFF);
        *out++ = static_cast<char>(group & 0xFF);
    }
    if (rest >= 2)
    {
        // Missing characters count as zero bits.
        unsigned group = base64Value(text[i]) << 18 | base64Value(text[i + 1]) << 12;
        if (rest == 3)
            group |= base64Value(text[i + 2]) << 6;
        *out++ = static_cast<char>(group >> 16 & 0xFF);
        if (rest == 3)
            *out++ = static_cast<char>(group >> 8 & 0xFF);
    }
    return result;
}

} // namespace Conversion
