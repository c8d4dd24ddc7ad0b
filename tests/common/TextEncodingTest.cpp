// Base64, UTF-8 cleaning and JSON string text.
#include "common/Conversion.h"
#include "common/JSONText.h"

#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace
{

typedef std::vector<std::pair<std::string, std::string>> Cases;

Common::string make(std::string const& s)
{
    return Common::string(s.data(), static_cast<unsigned>(s.size()));
}

TEST(Base64, EncodesAndDecodesRfc4648VectorsAndBinaryBytes)
{
    std::string const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    EXPECT_EQ(alphabet, text(BASE64_CHARACTERS));
    for (int c = -128; c <= 256 + 'A'; ++c)
        EXPECT_EQ(c > 0 && c < 256 && alphabet.find(char(c)) != std::string::npos,
                  Common::isBase64(c))
            << c;
    for (auto const& c : Cases{{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foobar", "Zm9vYmFy"},
                               {std::string("\0", 1), "AA=="}, {"\xFB\xFF", "+/8="}})
    {
        EXPECT_EQ(c.second, text(Conversion::base64Encode(make(c.first)))) << c.first;
        EXPECT_EQ(c.first, text(Conversion::base64Decode(make(c.second)))) << c.second;
    }
    std::string encoded = text(Conversion::base64Encode(make(std::string(300, 'x'))));
    EXPECT_EQ(400u, encoded.size()); // no line breaks
}

TEST(Base64, DecodingStopsAtPaddingOrAForeignCharacterAndDropsPartialGroups)
{
    for (auto const& c :
         Cases{{"TQ", "M"}, {"T", ""}, {"TWFuT", "Man"}, {"Zm9vYmE", "fooba"}, {"TWFu=TWFu", "Man"},
               {"TQ=x", "M"}, {"TW Fu", "M"}, {"-_-_", ""}, {"TWFu\xC3\xA9TWFu", "Man"},
               {std::string("TW\0Fu", 5), "M"}, {"TR==", "M"}, {"TWF=", "Ma"}})
        EXPECT_EQ(c.second, text(Conversion::base64Decode(make(c.first)))) << c.first;
}

// Only the shape is checked: overlong forms and surrogates stay.
TEST(ToValidUtf8, KeepsWellShapedSequencesAndDropsStrayTruncatedAndInterruptedBytes)
{
    for (std::string const& kept :
         {std::string("a\0\t\x7F", 4), std::string("\xC3\xA9z\xE2\x82\xAC\xF0\x9F\x98\x80"),
          std::string("\xF8\x88\x80\x80\x80\xFD\x84\x80\x80\x80\x80"),
          std::string("\xC0\x80\xED\xA0\x80")})
        EXPECT_EQ(kept, text(Conversion::toValidUTF8(make(kept))));
    for (auto const& c :
         Cases{{"\x41\xC3\xA9\xFF\xFE\x42", "\x41\xC3\xA9\x42"}, {"A\xC3", "A"},
               {"\xFE\x80\x80\x80\x80\x80\x80", ""}, {"\x80\xC3\xA9\xA9", "\xC3\xA9"},
               {"A\xF0\x9F\x98", "A"}, {"A\xFC\x84\x80\x80\x80", "A"}, {"\xC3\101", "A"},
               {"\xF0\x9F\101\x80", "A"}, {"\xC3\xC3\xA9", "\xC3\xA9"},
               {std::string("\xC3\0", 2), std::string("\0", 1)}})
        EXPECT_EQ(c.second, text(Conversion::toValidUTF8(make(c.first)))) << c.first;
}

TEST(JSONText, EscapesQuotesBackslashesControlAndHighBytesOnly)
{
    std::string const value("admin 2/x \"b\\c\0\n\x1F\x7F\xE9\xFF", 20);
    EXPECT_EQ("admin 2/x \\\"b\\\\c\\u0000\\u000A\\u001F\\u007F\\u00E9\\u00FF",
              text(Conversion::toJSONText(make(value))));
}

} // namespace
