#include "common/String.h"
#include "common/List.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Common::string;

namespace
{
std::vector<std::string> fields(Common::list<string> const& parts)
{
    std::vector<std::string> out;
    for (auto it = parts.begin(); it != parts.end(); ++it)
        out.push_back(std::string(it->c_str(), it->size()));
    return out;
}
} // namespace

TEST(String, EmptyStringsOwnATerminatedBuffer)
{
    string empty;
    EXPECT_EQ(0u, empty.size());
    EXPECT_TRUE(empty.empty());
    ASSERT_NE(nullptr, empty.c_str());
    EXPECT_EQ('\0', empty.c_str()[0]);

    string cleared("text");
    cleared.clear();
    EXPECT_TRUE(cleared.empty());
    EXPECT_EQ(string(nullptr), empty);

    // An index past the end yields the terminator.
    EXPECT_EQ('\0', string("abc")[3]);
    EXPECT_EQ('\0', string("abc")[1000]);
}

TEST(String, ConstructionCopiesExactBytes)
{
    EXPECT_EQ(string("abc"), string("abcdef", 3));
    EXPECT_EQ(string("cde"), string("abcdef", 2, 3));
    EXPECT_EQ(string("x"), string('x'));

    string withNul("a\0b", 3);
    EXPECT_EQ(3u, withNul.size());
    EXPECT_EQ('b', withNul[2]);
    EXPECT_FALSE(withNul == "a");
}

TEST(String, CopiesShareUntilOneChanges)
{
    string original("shared");
    string copy(original);
    EXPECT_EQ(original.c_str(), copy.c_str());

    copy += "!";
    EXPECT_EQ(string("shared"), original);
    EXPECT_EQ(string("shared!"), copy);
    EXPECT_EQ(string("xyshared!z"), "xy" + copy + "z");
    EXPECT_TRUE(string("ab") < "abc" && !(string("a") < string("a")) && string("abc") != "ABC");

    string assigned;
    assigned = original;
    assigned = "other";
    EXPECT_EQ(string("shared"), original);

    string self("self");
    self = self;
    self.assign(self);
    EXPECT_EQ(string("self"), self);
}

TEST(String, AssignmentFromOwnBufferIsSafe)
{
    string text("abcdef");
    text = text.c_str() + 2;
    EXPECT_EQ(string("cdef"), text);
    text.assign(text.c_str() + 1, 2);
    EXPECT_EQ(string("de"), text);
    text += text;
    EXPECT_EQ(string("dede"), text);
}

TEST(String, FindForwards)
{
    string abc("abc");
    EXPECT_EQ(0u, abc.find(""));
    EXPECT_EQ(3u, abc.find("", 3));
    EXPECT_EQ(string::npos, abc.find("", 4));
    EXPECT_EQ(string::npos, abc.find("abcd"));
    EXPECT_EQ(1u, abc.find("bc"));
    EXPECT_EQ(2u, abc.find('c'));
    EXPECT_EQ(string::npos, abc.find("B"));
    EXPECT_EQ(3u, string("abcabc").find(string("abc"), 1));
    EXPECT_EQ(string::npos, abc.find("a", string::npos));
    EXPECT_EQ(1u, abc.find("bcX", 0, 2));
}

TEST(String, FindBackwards)
{
    string abc("abc");
    EXPECT_EQ(0u, abc.rfind("a"));
    EXPECT_EQ(2u, abc.rfind('c'));
    EXPECT_EQ(3u, string("abcabc").rfind("abc"));
    EXPECT_EQ(0u, string("abcabc").rfind("abc", 2));
    EXPECT_EQ(1u, abc.rfind("bc", 2)); // start lowered so the needle fits
    EXPECT_EQ(string::npos, abc.rfind("abcd"));
    EXPECT_EQ(string::npos, abc.rfind("x"));
    EXPECT_EQ(2u, abc.rfind(""));
    EXPECT_EQ(0u, string().rfind(""));
    EXPECT_EQ(string::npos, string().rfind("a"));
    EXPECT_EQ(0u, abc.rfind("a", 1000));
}

TEST(String, SubstrAndReplaceClampOutOfRange)
{
    string text("hello world");
    EXPECT_EQ(string("world"), text.substr(6));
    EXPECT_EQ(string("lo w"), text.substr(3, 4));
    EXPECT_EQ(string("world"), text.substr(6, 1000));
    EXPECT_EQ(string(""), text.substr(50, 2));
    EXPECT_EQ(string("a"), string("a\0b", 3).substr(0, string::npos)); // npos stops at a NUL
    EXPECT_EQ(3u, string("a\0b", 3).substr(0, 3).size());

    EXPECT_EQ(string("hello there"), string(text).replace(6, 5, "there"));
    EXPECT_EQ(string("hi world"), string(text).replace(0, 5, string("hi")));
    EXPECT_EQ(string("hello!"), string(text).replace(5, 1000, "!"));
    EXPECT_EQ(string("hello world?"), string(text).replace(99, 3, "?"));
    EXPECT_EQ(string("held"), string("hello world").replace(3, 7, ""));
}

TEST(String, SplitKeepsEmptyFields)
{
    EXPECT_EQ((std::vector<std::string>{"x=1", "y=2"}), fields(string("x=1&y=2").split("&")));
    EXPECT_EQ((std::vector<std::string>{"", ""}), fields(string("&").split("&")));
    EXPECT_EQ((std::vector<std::string>{"a", "", "b"}), fields(string("a,,b").split(",")));
    EXPECT_EQ((std::vector<std::string>{"a", ""}), fields(string("a,").split(",")));
    EXPECT_EQ((std::vector<std::string>{""}), fields(string().split(",")));
    EXPECT_EQ((std::vector<std::string>{"plain"}), fields(string("plain").split(",")));
    EXPECT_EQ((std::vector<std::string>{"a", "b"}), fields(string("a::b").split("::")));
    EXPECT_EQ((std::vector<std::string>{"", "Ab"}),
              fields(string("aAb").split("a"))); // case-sensitive
}

TEST(String, ReplaceEveryOccurrence)
{
    using Common::Replace;
    EXPECT_EQ(string("a\\\\b\\\\"), Replace(string("a\\b\\"), string("\\"), string("\\\\")));
    EXPECT_EQ(string("line1\\nline2"),
              Replace(string("line1\nline2"), string("\n"), string("\\n")));
    EXPECT_EQ(string("ab"), Replace(string("a\r\rb"), string("\r"), string("")));
    EXPECT_EQ(string("xx"), Replace(string("aaaa"), string("aa"), string("x")));
    EXPECT_EQ(string("same"), Replace(string("same"), string(""), string("x")));
    EXPECT_EQ(string("same"), Replace(string("same"), string("q"), string("x")));
}
