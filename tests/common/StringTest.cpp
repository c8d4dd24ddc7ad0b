#include "common/String.h"
#include "common/CaseCompare.h"
#include "common/IString.h"
#include "common/List.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Common::istring;
using Common::string;

namespace
{

template <class S> std::vector<std::string> fields(Common::list<S> const& parts)
{
    std::vector<std::string> out;
    for (auto it = parts.begin(); it != parts.end(); ++it)
        out.push_back(std::string(it->c_str(), it->size()));
    return out;
}

TEST(String, HoldsExactBytesAndCopiesShareUntilOneChanges)
{
    EXPECT_EQ('\0', string().c_str()[0]);
    EXPECT_EQ(string(nullptr), string());
    EXPECT_EQ('\0', string("abc")[1000]); // past the end: the terminator
    string withNul("a\0b", 3);
    EXPECT_EQ(3u, withNul.size());
    EXPECT_FALSE(withNul == "a");
    string original("shared"), copy(original);
    EXPECT_EQ(original.c_str(), copy.c_str());
    copy += "!";
    EXPECT_EQ(string("shared"), original);
    EXPECT_EQ(string("xyshared!z"), "xy" + copy + "z");
    EXPECT_TRUE(string("ab") < "abc" && !(string("a") < string("a")) && string("abc") != "ABC");
    string text("abcdef"); // assignments from its own buffer
    text = text;
    text = text.c_str() + 2;
    text.assign(text.c_str() + 1, 2);
    text += text;
    EXPECT_EQ(string("dede"), text);
}

TEST(String, SearchesSubstrAndReplaceClampOutOfRangePositions)
{
    string abc("abc");
    EXPECT_EQ(3u, abc.find("", 3));
    EXPECT_EQ(string::npos, abc.find("", 4));
    EXPECT_EQ(string::npos, abc.find("abcd"));
    EXPECT_EQ(3u, string("abcabc").find(string("abc"), 1));
    EXPECT_EQ(string::npos, abc.find("a", string::npos));
    EXPECT_EQ(1u, abc.find("bcX", 0, 2));
    EXPECT_EQ(3u, string("abcabc").rfind("abc"));
    EXPECT_EQ(0u, string("abcabc").rfind("abc", 2));
    EXPECT_EQ(1u, abc.rfind("bc", 2)); // start lowered so the needle fits
    EXPECT_EQ(string::npos, abc.rfind("abcd"));
    EXPECT_EQ(2u, abc.rfind(""));
    EXPECT_EQ(0u, string().rfind(""));
    EXPECT_EQ(0u, abc.rfind("a", 1000));

    string text("hello world");
    EXPECT_EQ(string("lo w"), text.substr(3, 4));
    EXPECT_EQ(string("world"), text.substr(6, 1000));
    EXPECT_EQ(string(""), text.substr(50, 2));
    EXPECT_EQ(string("a"), string("a\0b", 3).substr(0, string::npos)); // npos stops at a NUL
    EXPECT_EQ(3u, string("a\0b", 3).substr(0, 3).size());
    EXPECT_EQ(string("hello!"), string(text).replace(5, 1000, "!"));
    EXPECT_EQ(string("hello world?"), string(text).replace(99, 3, "?"));
    EXPECT_EQ(string("held"), string(text).replace(3, 7, ""));
}

TEST(String, SplitKeepsEmptyFieldsAndReplaceTakesEveryOccurrence)
{
    typedef std::vector<std::string> V;
    EXPECT_EQ((V{"", ""}), fields(string("&").split("&")));
    EXPECT_EQ((V{"a", "", "b"}), fields(string("a,,b").split(",")));
    EXPECT_EQ((V{""}), fields(string().split(",")));
    EXPECT_EQ((V{"a", "b"}), fields(string("a::b").split("::")));
    EXPECT_EQ((V{"", "Ab"}), fields(string("aAb").split("a"))); // case-sensitive
    EXPECT_EQ((V{"a", "b", "", "c"}), fields(istring("aXbxxc").split("x")));

    using Common::Replace;
    EXPECT_EQ(string("a\\\\b\\\\"), Replace(string("a\\b\\"), string("\\"), string("\\\\")));
    EXPECT_EQ(string("xx"), Replace(string("aaaa"), string("aa"), string("x")));
    EXPECT_EQ(string("same"), Replace(string("same"), string(""), string("x")));
}

TEST(IString, ComparesAndSearchesIgnoringCaseButNeverOrders)
{
    EXPECT_TRUE(istring("Foo") == "fOO");
    EXPECT_FALSE(istring("Foo") == "Foo ");
    EXPECT_TRUE(istring("platform") == string("PlatForm"));
    EXPECT_FALSE(istring("a") < istring("b"));
    EXPECT_FALSE(istring("b") < istring("a"));
    EXPECT_EQ(8u, istring("Command=Query").find("query"));
    EXPECT_EQ(0u, istring("Command=Query").find(istring("COMMAND")));

    // rfind never reports position 0.
    EXPECT_EQ(istring::npos, istring("abc").rfind("A"));
    EXPECT_EQ(1u, istring("xAbc").rfind("a"));
    EXPECT_EQ(3u, istring("abcABC").rfind("abc"));

    // The comparisons: 0 for equal, 1 for unequal; a text equals its extensions.
    EXPECT_TRUE(stricmp("ABC", "abc") == 0 && stricmp("ab", "abc") == 0 && stricmp("", "x") == 0);
    EXPECT_TRUE(stricmp("abc", "abd") == 1 && stricmp("abd", "abc") == 1);
    EXPECT_TRUE(memicmp("ABC", "abd", 2) == 0 && memicmp("a", "B", 1) == 1);

    istring text = "Hello " + istring("big") + string(" World");
    text.replace(6, 3, "small");
    EXPECT_EQ(istring("hello small world"), text);
}

} // namespace
