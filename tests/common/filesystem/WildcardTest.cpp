#include "common/filesystem/Wildcard.h"

#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

namespace fs = Common::Filesystem;

namespace
{
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
    EXPECT_FALSE(fs::_isWild("*.txt", match)); // no "/"
    EXPECT_FALSE(fs::_isWild("/d*/x.txt", match));
    EXPECT_EQ("kept", text(match.prefix));

    match = parsed("/x*y/a*b**c");
    EXPECT_EQ("a", text(match.prefix));
    ASSERT_EQ(2u, match.middle.size());
    EXPECT_EQ("b", text(*match.middle.begin()));
    EXPECT_EQ("c", text(match.suffix));
    match = parsed("/d/*");
    EXPECT_TRUE(match.prefix.empty() && match.middle.empty() && match.suffix.empty());
}

// Matching is lenient on purpose: see _isMatch.
TEST(Wildcard, MatchesLeniently)
{
    fs::_MATCH txt = parsed("/d/*.txt");
    EXPECT_TRUE(fs::_isMatch("report.txt", txt));
    EXPECT_FALSE(fs::_isMatch("report.txt.bak", txt));
    EXPECT_FALSE(fs::_isMatch("a.txt.txt", txt)); // only the first ".txt" counts
    EXPECT_FALSE(fs::_isMatch("", txt));

    fs::_MATCH inner = parsed("/d/ab*cd*");
    EXPECT_TRUE(fs::_isMatch("abXcd", inner));
    EXPECT_FALSE(fs::_isMatch("xabcd", inner));
    EXPECT_FALSE(fs::_isMatch("abXc", inner));
    // Each middle text is looked for from the prefix's length plus the lengths
    // of the earlier middle texts, not from behind the earlier match.
    fs::_MATCH twice = parsed("/d/*zz*a*");
    EXPECT_TRUE(fs::_isMatch("qqazz", twice));
    EXPECT_FALSE(fs::_isMatch("azz", twice));
}
