#include "collection/XMLEscape.h"

#include "common/Conversion.h"

namespace Collection
{
namespace
{

enum Place
{
    ElementText,
    AttributeValue
};

// What one character of the value becomes in the document.
struct Piece
{
    char const* bytes;
    unsigned length;
};

template <unsigned N> Piece fixed(char const (&text)[N])
{
    return Piece{text, N - 1};
}

Piece const dropped = {"", 0};
Piece const blank = {" ", 1};

// Bytes in the sequence that `lead` starts. The text has been through
// Conversion::toValidUTF8, so every lead byte has all its continuation bytes.
unsigned sequenceLength(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead < 0xE0)
        return 2;
    if (lead < 0xF0)
        return 3;
    if (lead < 0xF8)
        return 4;
    return lead < 0xFC ? 5 : 6;
}

// True for a 2- to 4-byte sequence that is UTF-8 proper, the form XML
// parsers accept: the shortest form of a code point up to U+10FFFF that is
// not a surrogate.
bool isProperUTF8(unsigned char const* at, unsigned length)
{
    static unsigned const smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    if (length > 4)
        return false;
    unsigned codePoint = at[0] & (0x7Fu >> length);
    for (unsigned k = 1; k < length; ++k)
        codePoint = codePoint << 6 | (at[k] & 0x3Fu);
    bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    return codePoint >= smallest[length] && codePoint <= 0x10FFFF && !surrogate;
}

// U+FFFE and U+FFFF: EF BF BE and EF BF BF.
bool isNonCharacter(unsigned char const* at, unsigned length)
{
    return length == 3 && at[0] == 0xEF && at[1] == 0xBF && (at[2] == 0xBE || at[2] == 0xBF);
}

Piece pieceFor(unsigned char const* at, Place place)
{
    bool attribute = place == AttributeValue;
    switch (at[0])
    {
    case '&':
        return fixed("&amp;");
    case '<':
        return fixed("&lt;");
    case '>':
        return fixed("&gt;");
    case '\r':
        return fixed("&#13;");
    case '"':
        return attribute ? fixed("&quot;") : Piece{"\"", 1};
    case '\'':
        return attribute ? fixed("&apos;") : Piece{"'", 1};
    case '\n':
        return attribute ? fixed("&#10;") : Piece{"\n", 1};
    case '\t':
        return attribute ? fixed("&#9;") : Piece{"\t", 1};
    }
    if (at[0] < 0x20)
        return blank;
    unsigned length = sequenceLength(at[0]);
    if (length > 1 && !isProperUTF8(at, length))
        return dropped;
    if (isNonCharacter(at, length))
        return blank;
    return Piece{reinterpret_cast<char const*>(at), length};
}

Common::string escaped(Common::string const& value, Place place)
{
    Common::string text = Conversion::toValidUTF8(value);
    unsigned char const* in = reinterpret_cast<unsigned char const*>(text.c_str());
    unsigned size = text.size();
    unsigned length = 0;
    for (unsigned i = 0; i < size; i += sequenceLength(in[i]))
        length += pieceFor(in + i, place).length;
    char* out = nullptr;
    Common::string result = Common::string::uninitialized(length, out);
    for (unsigned i = 0; i < size; i += sequenceLength(in[i]))
    {
        Piece piece = pieceFor(in + i, place);
        for (unsigned k = 0; k < piece.length; ++k)
            *out++ = piece.bytes[k];
    }
    return result;
}

} // namespace

Common::string xmlText(Common::string const& value)
{
    return escaped(value, ElementText);
}

Common::string xmlAttribute(Common::string const& value)
{
    return escaped(value, AttributeValue);
}

} // namespace Collection
