#pragma once

// Conversion helpers: free functions that turn raw values into text
// and back. Everything takes and returns Common::string. Nothing keeps state
// except the base64 alphabet.
//
// Safety: no function reads outside its input. Texts are read through
// Common::string, whose operator[] past the end yields the terminating NUL;
// raw byte inputs (MAC, IP, date records) must point at the documented number
// of bytes.

#include "common/String.h"

// The standard base64 alphabet of RFC 4648, built at start-up and destroyed
// at exit. The base64 functions use a constant table of the same characters,
// so they also work while other translation units are being initialized.
extern Common::string BASE64_CHARACTERS;

namespace Common
{
// True for ASCII letters, digits, '+' and '/'; false for everything else,
// including negative values (bytes >= 0x80 read as signed char).
bool isBase64(int c);
} // namespace Common

namespace Conversion
{

// --- Numbers ---------------------------------------------------------------

// Moves `p` to the nearest multiple of 5: remainder 1 or 2 goes down, 3 or 4
// goes up (52 -> 50, 53 -> 55, 254 -> 255, which stays unclamped).
unsigned char clampPercentage(unsigned char const& p);

// Least common multiple. Our choice for a zero operand (callers never pass
// one): it counts as 1, so leastCommonMultiple(0, b) is b and (0, 0) is 1.
// The result equals the stepping loop (add the smaller multiple until both
// agree) whenever the true least
// common multiple fits in 32 bits; beyond that it wraps modulo 2^32 (computed
// through the greatest common divisor, so it is fast for any input).
unsigned int leastCommonMultiple(unsigned int const& a, unsigned int const& b);

// Always "0:0:0", whatever the record says (the shipped placeholder). `time`
// is never read and may be null.
Common::string timeToString(unsigned char const* time);

// Status codes of xtoi.
enum XtoiStatus
{
    XTOI_OK = 0,
    XTOI_EMPTY = 1,    // no characters before the first NUL
    XTOI_TOO_LONG = 2, // more than 8 characters
    XTOI_NOT_HEX = 4   // a character is not a hexadecimal digit
};

// Parses up to 8 hexadecimal digits (either case, no "0x", nothing else)
// of `s` up to its first NUL into `out` and returns an XtoiStatus. On 1 and 2
// `out` is left unchanged; otherwise it is reset to 0 and the digits are
// added from the last to the first with weights 1, 16, 256, ...; on 4 it holds
// the sum of the digits after the offending character.
int xtoi(Common::string const& s, unsigned int& out);

// The value of the pair `high`, `low` as one byte: a digit counts its value,
// an ASCII letter of either case its upper-case form's distance from 'A' plus
// 10, any other character (NUL too) its code minus '0'; result high*16 + low,
// low 8 bits. Nothing is validated ("zz" gives some byte).
unsigned char hexPairValue(char high, char low);

// hexPairValue of s[0], s[1]. A string shorter than 2 reads the terminating
// NUL in place of the missing characters.
unsigned char hexStringToInt(Common::string const& s);

// The bytes spelled by hexadecimal text: hexStringToInt of each pair at 0,
// 2, 4, ... An odd length makes the last pair end at the terminating NUL.
Common::string stringToArray(Common::string const& s);

// Index of the first entry of [first, last) equal to `s` (strcmp), or the
// number of entries (last - first) if there is none. `s` and every entry must
// be NUL-terminated. (The table may also be of `char const* const`.)
unsigned int stringToIndex(char const* const* first, char const* const* last, char const* s);

// Decimal text ("%u" for the unsigned types, "%d"-style for the signed ones).
Common::string toString(unsigned char const& value);
Common::string toString(unsigned short const& value);
Common::string toString(unsigned int const& value);
Common::string toString(unsigned long const& value);
Common::string toString(unsigned long long const& value);
Common::string toString(short const& value);
Common::string toString(int const& value);
Common::string toString(long const& value);
Common::string toString(long long const& value);

// Decimal parsing, as defined here:
// - Leading blanks (space and tab only) are skipped.
// - No sign is accepted: "+5" and "-5" have no digits.
// - The longest run of decimal digits that follows is read; anything after it
//   (trailing junk) is ignored.
// - Text without such digits yields 0.
// - Overflow wraps modulo the target type's range: the digits accumulate in
//   the target's unsigned arithmetic (value = value * 10 + digit), so
//   toNumber<unsigned char>("256") is 0 and toNumber<unsigned int>
//   ("4294967297") is 1.
// The reference form stores the value (0 when there are no digits) and
// returns whether at least one digit was read; the value form returns it.
// Instantiated for unsigned char, unsigned int and unsigned long long; any
// other unsigned integer type works too.
template <class T> bool toNumber(Common::string const& text, T& value)
{
    static_assert(static_cast<T>(-1) > static_cast<T>(0), "toNumber parses unsigned types only");
    unsigned i = 0;
    while (text[i] == ' ' || text[i] == '\t')
        ++i;
    T result = 0;
    bool digits = false;
    // operator[] past the end yields the NUL, which stops both loops.
    for (; text[i] >= '0' && text[i] <= '9'; ++i)
    {
        result = static_cast<T>(result * static_cast<T>(10) + static_cast<T>(text[i] - '0'));
        digits = true;
    }
    value = result;
    return digits;
}

template <class T> T toNumber(Common::string const& text)
{
    T value = 0;
    toNumber<T>(text, value);
    return value;
}

// --- Addresses and dates ---------------------------------------------------

// Six bytes as "%02X:" each, the last ":" removed: "00:1A:2B:3C:4D:5E".
Common::string MacToString(unsigned char const* mac);

// "%d.%d.%d.%d" of b[0], b[1], b[2], b[3].
Common::string toIpV4String(unsigned char const* b);

// The four bytes of `address` lowest first: 0x0100007F gives "127.0.0.1".
Common::string toIpV4String(unsigned int address);

// Parses "%d.%d.%d.%d" and writes the four fields to out[0..3] as bytes (a
// field that was not parsed is written as 0). True only if all four fields
// were parsed and each is in 0..255; out is written either way.
bool ipToNumber(unsigned char* out, Common::string const& s);

// b[0]*256 + b[1] as the year, b[2] the month, b[3] the day:
// "year-MM-DD", the year unpadded, month and day with a leading "0" when <= 9.
Common::string dateToString(unsigned char const* b);

// Year in bits 16-31, month in bits 8-15, day in bits 0-7; same text:
// 0x07D80A05 gives "2008-10-05".
Common::string dateToString(unsigned int date);

// --- Encoded text ----------------------------------------------------------

// The bytes with invalid UTF-8 removed: a byte below 0x80 is kept; a lead
// byte 110xxxxx, 1110xxxx, 11110xxx, 111110xx or 1111110x is kept together
// with its 1 to 5 continuation bytes (10xxxxxx) only when the whole sequence
// is there; every other byte with the high bit set (stray continuation bytes,
// 0xFE, 0xFF, leads of truncated sequences) is dropped, not replaced.
Common::string toValidUTF8(Common::string const& s);

// Standard base64 (RFC 4648) with "=" padding and no line breaks.
Common::string base64Encode(Common::string const& bytes);

// Reads characters until the end, the first "=" or the first character that
// is not a base64 character, and ignores everything from there on. Each group
// of 4 gives 3 bytes; a final group of k >= 2 characters gives k - 1 bytes; a
// single leftover character is ignored.
Common::string base64Decode(Common::string const& text);

// --- Byte order ------------------------------------------------------------

// True on a little-endian host (always, on the x86 target).
bool isHostLittleEndian();

// `value` with its bytes in reverse order.
template <class T> T ChangeOrder(T const& value)
{
    static_assert(static_cast<T>(-1) > static_cast<T>(0),
                  "ChangeOrder reverses unsigned types only");
    T result = 0;
    T rest = value;
    for (unsigned i = 0; i < sizeof(T); ++i)
    {
        result = static_cast<T>((result << 8) | (rest & 0xFF));
        rest = static_cast<T>(rest >> 8);
    }
    return result;
}

// `value` in big-endian byte order: reversed on a little-endian host.
template <class T> T ConvertValueToBigEndian(T const& value)
{
    return isHostLittleEndian() ? ChangeOrder<T>(value) : value;
}

} // namespace Conversion
