#include "extension/Includes.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace
{
class MapReader : public Includes::Reader
{
public:
    bool read(const Common::string& path, Common::string& text) override
    {
        ++reads;
        auto found = files.find(std::string(path.c_str(), path.size()));
        if (found == files.end())
            return false;
        text = Common::string(found->second.data(), static_cast<unsigned>(found->second.size()));
        return true;
    }
    std::map<std::string, std::string> files;
    unsigned reads = 0;
};

struct Expanded
{
    std::string text;
    unsigned expansions;
    bool limited;
};

Expanded expand(const std::string& page, MapReader& reader, const std::string& folder = "/p/",
                const std::string& content = "/c/")
{
    Includes::Result r =
        Includes::expand(Common::string(page.data(), static_cast<unsigned>(page.size())),
                         Common::string(folder.c_str()), Common::string(content.c_str()), reader);
    return {std::string(r.text.c_str(), r.text.size()), r.expansions, r.limited};
}

// The plain loop (search again from the beginning after every
// replacement), with the same limits, as the reference.
Expanded reference(std::string page, MapReader& reader, const std::string& folder = "/p/",
                   const std::string& content = "/c/")
{
    Expanded out{std::string(), 0, false};
    for (;;)
    {
        size_t start = page.find("<?include ");
        if (start == std::string::npos)
            break;
        size_t end = page.find("?>", start);
        if (end == std::string::npos)
            break;
        std::string name = page.substr(start + 10, end - start - 10);
        std::string replacement;
        bool opened = false;
        if (!name.empty())
        {
            std::string path = (name[0] == '/' ? content : folder) + name;
            auto found = reader.files.find(path);
            if (found != reader.files.end())
            {
                opened = true;
                replacement = found->second;
            }
        }
        if (opened)
        {
            size_t size = page.size() - (end + 2 - start) + replacement.size();
            if (out.expansions == Includes::kMaxExpansions || size > Includes::kMaxPageBytes)
            {
                out.limited = true;
                break;
            }
            ++out.expansions;
        }
        page.replace(start, end + 2 - start, replacement);
    }
    out.text = page;
    return out;
}
} // namespace

TEST(Includes, NamesAreTakenExactlyRelativeOrFromTheContentFolder)
{
    MapReader reader;
    reader.files["/p/x.htm"] = "X";
    reader.files["/c//y.htm"] = "Y";
    reader.files["/p/sub/z.htm"] = "Z";
    reader.files["/p/t.htm "] = "T";
    for (auto const& c : std::map<std::string, std::string>{
             {"a<?include x.htm?>b<?include /y.htm?>c<?include sub/z.htm?>d", "aXbYcZd"},
             // A trailing blank is part of the name: "x.htm " does not exist.
             {"[<?include x.htm ?>]", "[]"},
             {"[<?include t.htm ?>]", "[T]"},
             // Without the blank behind "include" it is no directive; the
             // marker is case-sensitive.
             {"[<?includex.htm?>]", "[<?includex.htm?>]"},
             {"[<?INCLUDE x.htm?>]", "[<?INCLUDE x.htm?>]"},
             // Empty name and missing file: removed.
             {"[<?include ?>]", "[]"},
             {"[<?include nope?>]", "[]"},
             // Without "?>" the text stays, and the loop ends there.
             {"?>a<?include x.htm", "?>a<?include x.htm"},
             {"<?include x.htm?>a<?include x.htm", "Xa<?include x.htm"},
         })
        EXPECT_EQ(expand(c.first, reader).text, c.second) << c.first;
}

TEST(Includes, NestedAndJoinedDirectives)
{
    MapReader reader;
    reader.files["/p/outer.htm"] = "(<?include inner.htm?>)";
    reader.files["/p/inner.htm"] = "in";
    EXPECT_EQ(expand("<?include outer.htm?>", reader).text, "(in)");

    // An included text that opens a directive which the page closes.
    reader.files["/p/open.htm"] = "<?include inn";
    EXPECT_EQ(expand("<?include open.htm?>er.htm?>!", reader).text, "in!");

    // A directive formed across the edge of the included text, with the
    // start in the page before it.
    reader.files["/p/lude.htm"] = "lude inner.htm";
    EXPECT_EQ(expand("<?inc<?include lude.htm?>?>", reader).text, "in");
    reader.files["/p/q.htm"] = "?include inner.htm?>";
    EXPECT_EQ(expand("<<?include q.htm?>", reader).text, "in");
}

TEST(Includes, SelfIncludeStopsAtTheLimit)
{
    MapReader reader;
    reader.files["/p/self.htm"] = "a<?include self.htm?>b";
    Expanded e = expand("<?include self.htm?>", reader);
    EXPECT_TRUE(e.limited);
    EXPECT_EQ(e.expansions, Includes::kMaxExpansions);
    EXPECT_EQ(e.text, std::string(1000, 'a') + "<?include self.htm?>" + std::string(1000, 'b'));
    Expanded r = reference("<?include self.htm?>", reader);
    EXPECT_EQ(e.text, r.text);
}

TEST(Includes, SizeLimit)
{
    MapReader reader;
    reader.files["/p/big"] = std::string(40u << 20, 'x');
    Expanded e = expand("<?include big?><?include big?>", reader);
    EXPECT_TRUE(e.limited);
    EXPECT_EQ(e.expansions, 1u);
    EXPECT_EQ(e.text.size(), (40u << 20) + 15u);
}

TEST(Includes, ManyIncludesAreLinear)
{
    MapReader reader;
    reader.files["/p/k"] = std::string(1024, 'k');
    std::string page;
    for (int i = 0; i < 1000; ++i)
        page += "<p><?include k?></p>\n";
    Expanded e = expand(page, reader);
    EXPECT_FALSE(e.limited);
    EXPECT_EQ(e.expansions, 1000u);
    EXPECT_EQ(e.text.size(), 1000u * (1024 + 8));
}

TEST(Includes, PageWithoutDirectivesIsShared)
{
    MapReader reader;
    Common::string page("no directive <? here ?>");
    Includes::Result r = Includes::expand(page, "/p/", "/c/", reader);
    EXPECT_EQ(r.text.c_str(), page.c_str());
    EXPECT_EQ(reader.reads, 0u);
}

// Random pages built from the pieces that matter (markers, halves of
// markers, names, blanks) give the same text, count and limit as the
// plain loop.
TEST(Includes, MatchesThePlainLoop)
{
    const char* pieces[] = {
        "<?include ", "?>", "a", "b",  "/c", " ",  "<?inc",         "lude ",
        "<",          "?",  ">", "<?", "x",  "\n", "<?include a?>", "<?include b?>"};
    const unsigned pieceCount = sizeof pieces / sizeof pieces[0];
    unsigned seed = 2024;
    auto next = [&seed](unsigned n)
    {
        seed = seed * 1103515245u + 12345u;
        return (seed >> 16) % n;
    };
    auto randomText = [&](unsigned maxPieces)
    {
        std::string text;
        unsigned count = next(maxPieces + 1);
        for (unsigned i = 0; i < count; ++i)
            text += pieces[next(pieceCount)];
        return text;
    };
    for (int round = 0; round < 2000; ++round)
    {
        MapReader reader;
        reader.files["/p/a"] = randomText(6);
        reader.files["/p/b"] = randomText(6);
        reader.files["/c//c"] = randomText(4);
        reader.files["/p/a "] = randomText(3);
        std::string page = randomText(14);
        Expanded mine = expand(page, reader);
        Expanded theirs = reference(page, reader);
        ASSERT_EQ(mine.text, theirs.text) << "page: " << page << "\na: " << reader.files["/p/a"]
                                          << "\nb: " << reader.files["/p/b"];
        ASSERT_EQ(mine.expansions, theirs.expansions);
        ASSERT_EQ(mine.limited, theirs.limited);
    }
}
