#include "extension/NSPResponse.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string text(const Common::string& s)
{
    return std::string(s.c_str(), s.size());
}
} // namespace

TEST(NSPResponse, WriteAndFlush)
{
    Common::string target("page:");
    NSPResponse response(&target);
    response.Write("a");
    response.Write(Common::string("b"));
    response.Write(static_cast<const char*>(nullptr));
    EXPECT_EQ(text(target), "page:");
    response.Flush();
    EXPECT_EQ(text(target), "page:ab");
    EXPECT_EQ(text(response.buffer()), "");
    response.Flush(); // an empty buffer leaves the target unchanged
    EXPECT_EQ(text(target), "page:ab");
    response.Write("c");
    response.Clear();
    response.Flush();
    EXPECT_EQ(text(target), "page:ab");
}

TEST(NSPResponse, HtmlEncodeTurnsBlanksIntoPlus)
{
    EXPECT_EQ(text(NSPResponse::htmlEncode("a b  c")), "a+b++c");
    EXPECT_EQ(text(NSPResponse::htmlEncode("<x>")), "<x>");
    EXPECT_EQ(text(NSPResponse::htmlEncode("& \" '")), "&+\"+'");
}
