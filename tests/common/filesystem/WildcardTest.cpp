#include "common/filesystem/Wildcard.h"

#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <vector>

namespace fs = Common::Filesystem;
using Common::string;

namespace
{
std::vector<std::string> middle(fs::_MATCH const& match)
{
    std::vector<std::string> texts;
    for (Common::list<string>::const_iterator text = match.middle.begin();
         text != match.middle.end(); ++text)
        texts.push_back(text->c_str());
    return texts;
}

fs::_MATCH parsed(char const* pattern)
{
    fs::_MATCH match;
    EXPECT_TRUE(fs::_isWild(pattern, match)) << pattern;
    return match;
}
} // namespace

TEST(Wildcard, OnlyAStarInTheLastNameMakesAPattern)
{
    fs::_MATCH match;
    match.prefix = "kept";
    EXPECT_FALSE(fs::_isWild("*.txt", match)); // no folder part
    EXPECT_FALSE(fs::_isWild("/d*/x.txt", match));
    EXPECT_FALSE(fs::_isWild("/d/x.txt", match));
    EXPECT_FALSE(fs::_isWild("", match));
    EXPECT_EQ(string("kept"), match.prefix);

    match = parsed("/d/*.txt");
    EXPECT_EQ(string(""), match.prefix);
    EXPECT_EQ(string(".txt"), match.suffix);
    EXPECT_TRUE(middle(match).empty());

    match = parsed("./report*");
    EXPECT_EQ(string("report"), match.prefix);
    EXPECT_EQ(string(""), match.suffix);

    match = parsed("/x*y/a*b**c*d");
    EXPECT_EQ(string("a"), match.prefix);
    EXPECT_EQ((std::vector<std::string>{"b", "", "c"}), middle(match));
    EXPECT_EQ(string("d"), match.suffix);

    match = parsed("/d/*");
    EXPECT_TRUE(match.prefix.empty());
    EXPECT_TRUE(match.suffix.empty());
    EXPECT_TRUE(middle(match).empty());
}

TEST(Wildcard, MatchesLeniently)
{
    fs::_MATCH text = parsed("/d/*.txt");
    EXPECT_TRUE(fs::_isMatch("report.txt", text));
    EXPECT_TRUE(fs::_isMatch(".txt", text));
    EXPECT_FALSE(fs::_isMatch("report.txt.bak", text));
    EXPECT_FALSE(fs::_isMatch("a.txt.txt", text)); // only the first ".txt" counts
    EXPECT_FALSE(fs::_isMatch("txt", text));
    EXPECT_FALSE(fs::_isMatch("", text));

    fs::_MATCH prefixed = parsed("/d/ab*");
    EXPECT_TRUE(fs::_isMatch("ab", prefixed));
    EXPECT_TRUE(fs::_isMatch("abc", prefixed));
    EXPECT_FALSE(fs::_isMatch("cab", prefixed));
    EXPECT_FALSE(fs::_isMatch("a", prefixed));

    fs::_MATCH inner = parsed("/d/ab*cd*");
    EXPECT_TRUE(fs::_isMatch("abXcd", inner));
    EXPECT_TRUE(fs::_isMatch("abcd", inner));
    EXPECT_FALSE(fs::_isMatch("abXc", inner));

    // Each middle text is looked for from the prefix's length plus the
    // lengths of the earlier middle texts, not from behind the earlier match.
    // So "a" found before "zz" still counts.
    fs::_MATCH twice = parsed("/d/*zz*a*");
    EXPECT_TRUE(fs::_isMatch("qqazz", twice));
    EXPECT_FALSE(fs::_isMatch("azz", twice));

    fs::_MATCH everything = parsed("/d/*");
    EXPECT_TRUE(fs::_isMatch("anything", everything));
    EXPECT_TRUE(fs::_isMatch("", everything));
}
