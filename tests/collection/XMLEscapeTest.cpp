#include "collection/XMLEscape.h"

#include <gtest/gtest.h>

#include <string>

using Collection::xmlAttribute;
using Collection::xmlText;

namespace
{
std::string bytes(Common::string const& s)
{
    return std::string(s.c_str(), s.size());
}

std::string text(std::string const& value)
{
    return bytes(xmlText(Common::string(value.data(), value.size())));
}

std::string attribute(std::string const& value)
{
    return bytes(xmlAttribute(Common::string(value.data(), value.size())));
}
} // namespace

TEST(XMLEscape, MarkupAndLineBreaks)
{
    std::string typed = "Smith & Sons <x> \"q\" 'a'\tLF\nCR\rCRLF\r\n";
    EXPECT_EQ(text(typed), "Smith &amp; Sons &lt;x&gt; \"q\" 'a'\tLF\nCR&#13;CRLF&#13;\n");
    EXPECT_EQ(
        attribute(typed),
        "Smith &amp; Sons &lt;x&gt; &quot;q&quot; &apos;a&apos;&#9;LF&#10;CR&#13;CRLF&#13;&#10;");
}

TEST(XMLEscape, OtherTextIsUnchanged)
{
    // Two-, three- and four-byte characters, DEL and a C1 control character
    // are all characters XML 1.0 can hold.
    for (std::string typed :
         {"", "Jane Doe", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "\x7F\xC2\x85"})
    {
        EXPECT_EQ(text(typed), typed);
        EXPECT_EQ(attribute(typed), typed);
    }
    EXPECT_EQ(text("reg add \"HKLM\\Software\" /f"), "reg add \"HKLM\\Software\" /f");
}

TEST(XMLEscape, CharactersXMLCannotHoldBecomeBlanks)
{
    for (auto escape : {text, attribute})
    {
        EXPECT_EQ(escape(std::string("a\0b\x01"
                                     "c\x1F"
                                     "d\x0B",
                                     8)),
                  "a b c d ");
        EXPECT_EQ(escape("U+FFFE \xEF\xBF\xBE U+FFFF \xEF\xBF\xBF"), "U+FFFE   U+FFFF  ");
    }
}

TEST(XMLEscape, BytesThatAreNotUTF8AreDropped)
{
    for (auto escape : {text, attribute})
    {
        EXPECT_EQ(escape("a\xFF"
                         "b\x80"
                         "c\xC3"),
                  "abc");
        // Shaped like UTF-8 but refused by XML parsers: 5- and 6-byte forms,
        // an overlong "<", a surrogate, a code point past U+10FFFF.
        EXPECT_EQ(escape("5\xF8\x88\x80\x80\x80"
                         "6\xFC\x84\x80\x80\x80\x80"
                         "o\xC0\xBC"
                         "s\xED\xA0\x80"
                         "big\xF4\x90\x80\x80."),
                  "56osbig.");
    }
}
