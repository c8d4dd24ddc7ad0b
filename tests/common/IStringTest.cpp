#include "common/IString.h"
#include "common/CaseCompare.h"
#include "common/List.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Common::istring;
using Common::string;

TEST(IString, EqualityIgnoresCaseButNotLength)
{
    EXPECT_TRUE(istring("Foo") == "fOO");
    EXPECT_FALSE(istring("Foo") == "Foo ");
    EXPECT_TRUE(istring("Platform") == istring("PLATFORM"));
    EXPECT_TRUE(istring("platform") == string("PlatForm"));
    EXPECT_TRUE(istring("a") != "b");
    EXPECT_TRUE(istring("") == "");
}

TEST(IString, NothingIsEverLessThanAnything)
{
    EXPECT_FALSE(istring("a") < istring("b"));
    EXPECT_FALSE(istring("b") < istring("a"));
    EXPECT_FALSE(istring("a") < "b");
    EXPECT_FALSE(istring("") < string("z"));
}

TEST(IString, FindIgnoresCase)
{
    istring text("Command=Query");
    EXPECT_EQ(8u, text.find("query"));
    EXPECT_EQ(8u, text.find(string("QUERY")));
    EXPECT_EQ(7u, text.find('='));
    EXPECT_EQ(0u, text.find(istring("COMMAND")));
    EXPECT_EQ(istring::npos, text.find("x"));
}

TEST(IString, RfindNeverReportsPositionZero)
{
    EXPECT_EQ(istring::npos, istring("abc").rfind("A"));
    EXPECT_EQ(istring::npos, istring("a").rfind("a"));
    EXPECT_EQ(1u, istring("xAbc").rfind("a"));
    EXPECT_EQ(3u, istring("abcABC").rfind("abc"));
    EXPECT_EQ(istring::npos, istring("abcABC").rfind("abc", 2));
    EXPECT_EQ(0u, string("abc").rfind("a")); // the case-sensitive string does report it
}

TEST(IString, SplitIgnoresCaseAndKeepsEmptyFields)
{
    Common::list<istring> parts = istring("aXbxxc").split("x");
    std::vector<std::string> got;
    for (auto it = parts.begin(); it != parts.end(); ++it)
        got.push_back(it->c_str());
    EXPECT_EQ((std::vector<std::string>{"a", "b", "", "c"}), got);
}

TEST(IString, ConcatenationAndReplaceKeepTheCaseInsensitiveType)
{
    istring text = "Hello " + istring("big") + string(" World");
    EXPECT_EQ(string("Hello big World"), static_cast<string>(text));
    text.replace(6, 3, "small");
    EXPECT_EQ(istring("hello small world"), text);
}

TEST(CaseCompare, NeverOrdersTexts)
{
    EXPECT_EQ(0, stricmp("ab", "abc"));
    EXPECT_EQ(0, stricmp("ABC", "abc"));
    EXPECT_EQ(1, stricmp("abd", "abc"));
    EXPECT_EQ(1, stricmp("abc", "abd"));
    EXPECT_EQ(0, stricmp("", "anything"));
    EXPECT_EQ(0, memicmp("ABC", "abd", 2));
    EXPECT_EQ(1, memicmp("ABC", "abd", 3));
    EXPECT_EQ(1, memicmp("a", "B", 1));
}
