#include "extension/Routing.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string text(const Common::istring& s)
{
    return std::string(s.c_str(), s.size());
}
std::string text(const Common::string& s)
{
    return std::string(s.c_str(), s.size());
}

struct Normalised
{
    std::string page;
    std::string query;
};

Normalised normalise(const std::string& url)
{
    Routing::Target target = Routing::normalise(Common::istring(url.c_str()));
    return {text(target.page), text(target.query)};
}
} // namespace

TEST(Routing, StartPage)
{
    for (const char* url : {"", "zrmedia://", "zrmedia:///", "/", "Tidewell", "zrmedia://Tidewell",
                            "zrmedia://Tidewell/", "?a=1", "#x", "zrmedia://#x"})
        EXPECT_EQ(normalise(url).page, "index.nsp") << url;
}

TEST(Routing, PrefixesInAnyCase)
{
    EXPECT_EQ(normalise("zrmedia://Tidewell/index.nsp?x=1#top").page, "index.nsp");
    EXPECT_EQ(normalise("zrmedia://Tidewell/index.nsp?x=1#top").query, "x=1");
    EXPECT_EQ(normalise("ZRMEDIA://TIDEWELL/a.htm").page, "a.htm");
    EXPECT_EQ(normalise("ZrMeDiA://tIdEwElL/a.htm").page, "a.htm");
    EXPECT_EQ(normalise("zrmedia://a.htm").page, "a.htm");
    EXPECT_EQ(normalise("Tidewell/a.htm").page, "a.htm");
    // The word alone is removed, and nothing more.
    EXPECT_EQ(normalise("zrmedia://TidewellX.htm").page, "X.htm");
    EXPECT_EQ(normalise("zrmedia://Tidewell//a.htm").page, "/a.htm");
    // Only one "/" goes, and "Tidewell" only right behind the scheme.
    EXPECT_EQ(normalise("//x.htm").page, "/x.htm");
    EXPECT_EQ(normalise("/Tidewell/a.htm").page, "Tidewell/a.htm");
    EXPECT_EQ(normalise("zrmedia:/a.htm").page, "zrmedia:/a.htm");
}

TEST(Routing, FragmentThenQuery)
{
    EXPECT_EQ(normalise("a.htm#b?c=1").page, "a.htm");
    EXPECT_EQ(normalise("a.htm#b?c=1").query, "");
    EXPECT_EQ(normalise("a.htm?c=1#b").query, "c=1");
    EXPECT_EQ(normalise("a.htm?c=1#b#d").query, "c=1");
}

TEST(Routing, QueryRemovalWithRepeatedCopies)
{
    Normalised n = normalise("page.htm?a=1?a=1");
    EXPECT_EQ(n.page, "page.htm");
    EXPECT_EQ(n.query, "a=1?a=1");
    n = normalise("page.htm?A=1?a=1?a=1");
    EXPECT_EQ(n.page, "page.htm");
    EXPECT_EQ(n.query, "A=1?a=1?a=1");
    n = normalise("page.htm?");
    EXPECT_EQ(n.page, "page.htm");
    EXPECT_EQ(n.query, "");
}

TEST(Routing, DecodingOrder)
{
    // The query is split off before decoding: an escaped "?" stays in the
    // name, and the query is handed on undecoded.
    Normalised n = normalise("a%3Fx.htm?q=%41");
    EXPECT_EQ(n.page, "a?x.htm");
    EXPECT_EQ(n.query, "q=%41");
    // The fragment too.
    EXPECT_EQ(normalise("a%23b.htm").page, "a#b.htm");
    // The prefixes are stripped after decoding.
    EXPECT_EQ(normalise("zrmedia%3A%2F%2FTidewell%2Fa.htm").page, "a.htm");
    EXPECT_EQ(normalise("%2Fa.htm").page, "a.htm");
    // "+" and "%2B" become blanks.
    EXPECT_EQ(normalise("a+b%2Bc.htm").page, "a b c.htm");
    EXPECT_EQ(normalise("%25%34%31").page, "%41");
}

TEST(Routing, BrokenEscapes)
{
    EXPECT_EQ(normalise("a.htm%").page, std::string("a.htm") + static_cast<char>(0xD0));
    EXPECT_EQ(normalise("%").page, std::string(1, static_cast<char>(0xD0)));
    EXPECT_EQ(normalise("a%zz").page.size(), 2u);
    EXPECT_EQ(normalise("%00").page, std::string("\0", 1)); // not empty: no start page
}

TEST(Routing, EnormousURL)
{
    std::string url = "zrmedia://Tidewell/";
    for (int i = 0; i < 100000; ++i)
        url += "%41+";
    url += "?";
    std::string query(1 << 20, 'q');
    url += query + "?" + query + "#frag";
    Normalised n = normalise(url);
    EXPECT_EQ(n.page.size(), 200000u);
    EXPECT_EQ(n.query.size(), 2 * query.size() + 1);
}

TEST(Routing, FilePath)
{
    Routing::FilePath f = Routing::fileFor("/c/", "sub/page.HTM");
    EXPECT_EQ(text(f.path), "/c/sub/page.HTM");
    EXPECT_EQ(text(f.folder), "/c/sub/");
    EXPECT_EQ(text(f.name), "page.HTM");
    EXPECT_EQ(text(f.extension), "HTM");

    f = Routing::fileFor("/c/", "/x.htm"); // from "//x.htm"
    EXPECT_EQ(text(f.path), "/c//x.htm");
    EXPECT_EQ(text(f.folder), "/c//");

    f = Routing::fileFor("", "a.b/name");
    EXPECT_EQ(text(f.folder), "a.b/");
    EXPECT_EQ(text(f.extension), "");

    f = Routing::fileFor("", "plain");
    EXPECT_EQ(text(f.folder), "");
    EXPECT_EQ(text(f.name), "plain");

    f = Routing::fileFor("/c/", "a.tar.gz");
    EXPECT_EQ(text(f.extension), "gz");
}

TEST(Routing, PHPAndIncludeExtensions)
{
    for (const char* name : {"a.php", "x/A.PHP"})
        EXPECT_TRUE(Routing::isPHP(name)) << name;
    // ".php" is not longer than 4.
    for (const char* name : {".php", "a.php.php", "a.php.htm", "a.phps", "php"})
        EXPECT_FALSE(Routing::isPHP(name)) << name;
    for (const char* extension : {"htm", "HTML", "Htm"})
        EXPECT_TRUE(Routing::expandsIncludes(extension)) << extension;
    for (const char* extension : {"txt", "htmx", "ht", "", "shtml"})
        EXPECT_FALSE(Routing::expandsIncludes(extension)) << extension;
}
