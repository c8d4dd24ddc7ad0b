// Base64, UTF-8 cleaning and JSON string text.
#include "common/Conversion.h"
#include "common/JSONText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

typedef std::vector<std::pair<std::string, std::string>> Cases;

std::string bytes(Common::string const& s)
{
    return std::string(s.c_str(), s.size());
}

Common::string make(std::string const& s)
{
    return Common::string(s.data(), static_cast<unsigned>(s.size()));
}

TEST(Base64, IsBase64IsExactlyTheAlphabet)
{
    std::string const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    EXPECT_EQ(alphabet, bytes(BASE64_CHARACTERS));
    for (int c = -128; c <= 256 + 'A'; ++c)
        EXPECT_EQ(c > 0 && c < 256 && alphabet.find(char(c)) != std::string::npos,
                  Common::isBase64(c))
            << c;
}

TEST(Base64, EncodesRfc4648VectorsAndBinaryBytesWithoutLineBreaks)
{
    for (auto const& c : Cases{{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"},
                               {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"},
                               {std::string("\0", 1), "AA=="}, {"\xFF\xFF\xFF", "////"},
                               {"\xFB\xFF", "+/8="}})
    {
        EXPECT_EQ(c.second, bytes(Conversion::base64Encode(make(c.first)))) << c.first;
        EXPECT_EQ(c.first, bytes(Conversion::base64Decode(make(c.second)))) << c.second;
    }
    std::string encoded = bytes(Conversion::base64Encode(make(std::string(300, 'x'))));
    EXPECT_EQ(400u, encoded.size());
    EXPECT_EQ(std::string::npos, encoded.find('\n'));
}

TEST(Base64, DecodingStopsAtPaddingOrAForeignCharacterAndDropsPartialGroups)
{
    for (auto const& c : Cases{
             // A partial final group: one leftover character is ignored.
             {"TQ", "M"}, {"T", ""}, {"TWF", "Ma"}, {"TWFuT", "Man"}, {"Zm9vYmE", "fooba"},
             // Decoding stops at the first padding...
             {"TWFu=TWFu", "Man"}, {"=TWFu", ""}, {"TQ=x", "M"}, {"TQ==TWFu", "M"},
             // ... and at the first character outside the alphabet.
             {"TW Fu", "M"}, {"TWFu\nTWFu", "Man"}, {"-_-_", ""}, {"TWFu\xC3\xA9TWFu", "Man"},
             {std::string("TW\0Fu", 5), "M"},
             // Leftover bits of a partial group are dropped.
             {"TR==", "M"}, {"TWF=", "Ma"}})
        EXPECT_EQ(c.second, bytes(Conversion::base64Decode(make(c.first)))) << c.first;
}

TEST(ToValidUtf8, KeepsWellShapedSequencesAndDropsStrayTruncatedAndInterruptedBytes)
{
    for (auto const& c : Cases{
             {"plain text\t\r\n", "plain text\t\r\n"}, {std::string("a\0b\x7F", 4), std::string("a\0b\x7F", 4)},
             {"a\xC3\xA9z\xE2\x82\xAC!", "a\xC3\xA9z\xE2\x82\xAC!"},
             {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"}, {"\xF8\x88\x80\x80\x80", "\xF8\x88\x80\x80\x80"},
             {"\xFD\x84\x80\x80\x80\x80", "\xFD\x84\x80\x80\x80\x80"},
             // Only the shape is checked: overlong forms and surrogates stay.
             {"\xC0\x80", "\xC0\x80"}, {"\xED\xA0\x80", "\xED\xA0\x80"},
             {"\x41\xC3\xA9\xFF\x42", "\x41\xC3\xA9\x42"}, {"a\xFF\xFE" "b", "ab"},
             {"\xFE\x80\x80\x80\x80\x80\x80", ""},
             // Stray continuation bytes.
             {"\x80", ""}, {"\xC3\xA9\xA9", "\xC3\xA9"}, {"\x80\x81\x82\xC3\xA9", "\xC3\xA9"},
             // Sequences cut off at the end.
             {"A\xC3", "A"}, {"A\xE2\x82", "A"}, {"A\xF0\x9F\x98", "A"}, {"A\xF8\x88\x80\x80", "A"},
             {"A\xFC\x84\x80\x80\x80", "A"},
             // A lead byte followed by a non-continuation.
             {"\xC3" "A", "A"}, {"\xF0\x9F" "A\x80", "A"}, {"\xC3\xC3\xA9", "\xC3\xA9"},
             {std::string("\xC3\0", 2), std::string("\0", 1)}})
        EXPECT_EQ(c.second, bytes(Conversion::toValidUTF8(make(c.first)))) << c.first;
}

TEST(JSONText, EscapesQuotesBackslashesControlAndHighBytesOnly)
{
    for (auto const& c : Cases{{"", ""}, {"admin 2/x", "admin 2/x"}, {"a\"b\\c", "a\\\"b\\\\c"},
                               {std::string("\0x\n\x1F\x7F", 5), "\\u0000x\\u000A\\u001F\\u007F"},
                               {"caf\xE9\xFF", "caf\\u00E9\\u00FF"}})
        EXPECT_EQ(c.second, bytes(Conversion::toJSONText(make(c.first)))) << c.first;
}

} // namespace
