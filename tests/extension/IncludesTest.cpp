#include "extension/Includes.h"
#include "tests/support/Text.h"

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
        auto found = files.find(path.c_str());
        if (found == files.end())
            return false;
        text = Common::string(found->second.data(), static_cast<unsigned>(found->second.size()));
        return true;
    }
    std::map<std::string, std::string> files;
};

Includes::Result expand(const std::string& page, MapReader& reader)
{
    return Includes::expand(Common::string(page.data(), static_cast<unsigned>(page.size())), "/p/",
                            "/c/", reader);
}

std::string outcome(const Includes::Result& r)
{
    return (r.limited ? "limited, " : "whole, ") + std::to_string(r.expansions) + " expansions, " +
           std::to_string(r.text.size()) + " bytes";
}
} // namespace

TEST(Includes, DirectivesNestedAndFormedAcrossTheEdgesOfIncludedTexts)
{
    MapReader reader;
    reader.files = {{"/p/x.htm", "X"},
                    {"/c//y.htm", "Y"},
                    {"/p/sub/z.htm", "Z"},
                    {"/p/t.htm ", "T"},
                    {"/p/outer.htm", "(<?include inner.htm?>)"},
                    {"/p/inner.htm", "in"},
                    {"/p/open.htm", "<?include inn"},
                    {"/p/lude.htm", "lude inner.htm"},
                    {"/p/q.htm", "?include inner.htm?>"},
                    {"/p/blank.htm", " x.htm?>"}};
    const std::pair<const char*, const char*> cases[] = {
        // Relative to the page's folder, or from the content folder.
        {"a<?include x.htm?>b<?include /y.htm?>c<?include sub/z.htm?>d", "aXbYcZd"},
        // A trailing blank is part of the name.
        {"[<?include x.htm ?>]", "[]"},
        {"[<?include t.htm ?>]", "[T]"},
        // No blank behind "include", or another letter case: no directive.
        {"[<?includex.htm?>]", "[<?includex.htm?>]"},
        {"[<?INCLUDE x.htm?>]", "[<?INCLUDE x.htm?>]"},
        // An empty name and a missing file are removed.
        {"[<?include ?>]", "[]"},
        {"[<?include nope?>]", "[]"},
        // Without "?>" the text stays, and the expansion ends there.
        {"?>a<?include x.htm", "?>a<?include x.htm"},
        {"<?include x.htm?>a<?include x.htm", "Xa<?include x.htm"},
        // Included texts are expanded in turn, also where they open a
        // directive that the page closes or close one that the page opened.
        {"<?include outer.htm?>", "(in)"},
        {"<?include open.htm?>er.htm?>!", "in!"},
        {"<?inc<?include lude.htm?>?>", "in"},
        {"<<?include q.htm?>", "in"},
        {"<?include<?include blank.htm?>", "X"},
    };
    for (auto const& c : cases)
        EXPECT_EQ(text(expand(c.first, reader).text), c.second) << c.first;
}

TEST(Includes, ExpansionStopsAfterAThousandIncludesOrPastTheSizeLimit)
{
    MapReader reader;
    reader.files = {{"/p/self.htm", "a<?include self.htm?>b"},
                    {"/p/big", std::string(40u << 20, 'x')},
                    {"/p/k", std::string(1024, 'k')}};
    std::string many;
    for (int i = 0; i < 1000; ++i)
        many += "<p><?include k?></p>\n";
    EXPECT_EQ("limited, 1000 expansions, 2020 bytes",
              outcome(expand("<?include self.htm?>", reader)));
    EXPECT_EQ("limited, 1 expansions, " + std::to_string((40u << 20) + 15) + " bytes",
              outcome(expand("<?include big?><?include big?>", reader)));
    EXPECT_EQ("whole, 1000 expansions, 1032000 bytes", outcome(expand(many, reader)));
    EXPECT_EQ(text(expand("<?include self.htm?>", reader).text),
              std::string(1000, 'a') + "<?include self.htm?>" + std::string(1000, 'b'));
}
