#include "common/JSONText.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string escaped(const std::string& text)
{
    Common::string result = Conversion::toJSONText(Common::string(text.data(), text.size()));
    return std::string(result.c_str(), result.size());
}
} // namespace

TEST(JSONText, PrintableASCIIStaysAsItIs)
{
    EXPECT_EQ("", escaped(""));
    EXPECT_EQ("admin 2/x", escaped("admin 2/x"));
}

TEST(JSONText, QuotesBackslashesControlAndHighBytesAreEscaped)
{
    EXPECT_EQ("a\\\"b\\\\c", escaped("a\"b\\c"));
    EXPECT_EQ("\\u0000x\\u000A\\u001F\\u007F", escaped(std::string("\0x\n\x1F\x7F", 5)));
    EXPECT_EQ("caf\\u00E9\\u00FF", escaped("caf\xE9\xFF"));
}
