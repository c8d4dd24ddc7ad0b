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

TEST(Routing, PrefixesFragmentQueryAndDecodingInTheirOrder)
{
    struct
    {
        const char* url;
        const char* page;
        const char* query;
    } const cases[] = {
        // Prefixes in any case; the word alone is removed, and nothing more.
        {"zrmedia://Tidewell/index.nsp?x=1#top", "index.nsp", "x=1"},
        {"ZrMeDiA://tIdEwElL/a.htm", "a.htm", ""},
        {"zrmedia://a.htm", "a.htm", ""},
        {"Tidewell/a.htm", "a.htm", ""},
        {"zrmedia://TidewellX.htm", "X.htm", ""},
        {"zrmedia://Tidewell//a.htm", "/a.htm", ""},
        // Only one "/" goes, and "Tidewell" only right behind the scheme.
        {"//x.htm", "/x.htm", ""},
        {"/Tidewell/a.htm", "Tidewell/a.htm", ""},
        {"zrmedia:/a.htm", "zrmedia:/a.htm", ""},
        // The fragment goes first, then the query (with repeated copies).
        {"a.htm#b?c=1", "a.htm", ""},
        {"a.htm?c=1#b#d", "a.htm", "c=1"},
        {"page.htm?A=1?a=1?a=1", "page.htm", "A=1?a=1?a=1"},
        {"page.htm?", "page.htm", ""},
        // Both are split off before decoding: an escaped "?" or "#" stays in
        // the name, and the query is handed on undecoded.
        {"a%3Fx.htm?q=%41", "a?x.htm", "q=%41"},
        {"a%23b.htm", "a#b.htm", ""},
        // The prefixes are stripped after decoding; "+" and "%2B" are blanks.
        {"zrmedia%3A%2F%2FTidewell%2Fa.htm", "a.htm", ""},
        {"%2Fa.htm", "a.htm", ""},
        {"a+b%2Bc.htm", "a b c.htm", ""},
        {"%25%34%31", "%41", ""},
    };
    for (auto const& c : cases)
    {
        Normalised n = normalise(c.url);
        EXPECT_EQ(n.page, c.page) << c.url;
        EXPECT_EQ(n.query, c.query) << c.url;
    }
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
