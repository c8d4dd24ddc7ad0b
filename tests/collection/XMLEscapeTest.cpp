#include "collection/XMLEscape.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string escapedText(std::string const& value)
{
    return text(Collection::xmlText(Common::string(value.data(), value.size())));
}

std::string attribute(std::string const& value)
{
    return text(Collection::xmlAttribute(Common::string(value.data(), value.size())));
}
} // namespace

TEST(XMLEscape, MarkupLineBreaksAndWhatXMLCannotHold)
{
    std::string typed = "Smith & Sons <x> \"q\" 'a'\tLF\nCR\rCRLF\r\n";
    EXPECT_EQ(escapedText(typed), "Smith &amp; Sons &lt;x&gt; \"q\" 'a'\tLF\nCR&#13;CRLF&#13;\n");
    EXPECT_EQ(
        attribute(typed),
        "Smith &amp; Sons &lt;x&gt; &quot;q&quot; &apos;a&apos;&#9;LF&#10;CR&#13;CRLF&#13;&#10;");
    const struct
    {
        std::string typed, escaped;
    } cases[] = {
        // Two-, three- and four-byte characters, DEL and a C1 control
        // character are all characters XML 1.0 can hold.
        {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"\x7F\xC2\x85", "\x7F\xC2\x85"},
        {"reg add HKLM\\Software /f", "reg add HKLM\\Software /f"},
        // Characters XML cannot hold become blanks.
        {std::string("a\0b\x01" "c\x1F" "d\x0B", 8), "a b c d "},
        {"U+FFFE \xEF\xBF\xBE U+FFFF \xEF\xBF\xBF", "U+FFFE   U+FFFF  "},
        // Bytes not UTF-8, or refused by XML parsers (5- and 6-byte forms, an
        // overlong "<", a surrogate, past U+10FFFF), are dropped.
        {"a\xFF" "b\x80" "c\xC3", "abc"},
        {"5\xF8\x88\x80\x80\x80" "6\xFC\x84\x80\x80\x80\x80" "o\xC0\xBC" "s\xED\xA0\x80"
         "big\xF4\x90\x80\x80.",
         "56osbig."},
    };
    for (auto const& c : cases)
    {
        EXPECT_EQ(escapedText(c.typed), c.escaped);
        EXPECT_EQ(attribute(c.typed), c.escaped);
    }
}
