#include "extension/Configuration.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string text(const Common::string& s)
{
    return std::string(s.c_str(), s.size());
}
std::string fileFor(const char* host)
{
    return text(Configuration::fileFor(Common::istring(host)));
}
} // namespace

TEST(Configuration, FileBesideTheHost)
{
    EXPECT_EQ(fileFor("/opt/ui/iexplore"), "/opt/ui/TIDEWELL.XML");
    EXPECT_EQ(fileFor("/opt/ui/IEXPLORE.EXE"), "/opt/ui/TIDEWELL.XML");
    EXPECT_EQ(fileFor("C:\\Program Files\\iexplore.exe"), "C:/Program Files/TIDEWELL.XML");
    EXPECT_EQ(fileFor("/iexplore"), "/TIDEWELL.XML");
    EXPECT_EQ(fileFor("/opt/iexplore/bin/shell"), "/opt/iexplore/bin/TIDEWELL.XML");
    EXPECT_EQ(fileFor("/opt/ff/FireFox"), "/opt/ff/components/zrmedia/TIDEWELL.XML");
    EXPECT_EQ(fileFor("/opt/ff/firefox-bin"), "/opt/ff/components/zrmedia/TIDEWELL.XML");
    // "iexplore" wins over "firefox".
    EXPECT_EQ(fileFor("/firefox/iexplore"), "/firefox/TIDEWELL.XML");
    EXPECT_EQ(fileFor("/usr/bin/ctest"), "");
    EXPECT_EQ(fileFor("/tmp/application.exe"), "");
    EXPECT_EQ(fileFor(""), "");
}

TEST(Configuration, Entries)
{
    Configuration::Values v =
        Configuration::parse("<?xml version=\"1.0\"?>\n<!-- the UI -->\n<TIDEWELL>\n"
                             "  <ExtensionModule value=\"C:\\ui\\ext.dll\"/>\n"
                             "  <WorkingDir value='D:\\work'/>\n"
                             "  <UrlBase value=\"/srv/content/\"></UrlBase>\n"
                             "</TIDEWELL>\n");
    EXPECT_EQ(text(v.extensionModule), "C:/ui/ext.dll");
    EXPECT_EQ(text(v.workingFolder), "D:/work");
    EXPECT_EQ(text(v.contentFolder), "/srv/content/");
}

TEST(Configuration, MissingEntriesStayEmpty)
{
    Configuration::Values v =
        Configuration::parse("<TIDEWELL><UrlBase path=\"/x/\"/><urlbase value=\"/y/\"/>"
                             "<WorkingDir value=\"/w\"/></TIDEWELL>");
    EXPECT_EQ(text(v.extensionModule), "");
    EXPECT_EQ(text(v.contentFolder), ""); // no "value"; tags are case-sensitive
    EXPECT_EQ(text(v.workingFolder), "/w");

    // The first element of a tag counts.
    v = Configuration::parse("<T><UrlBase/><UrlBase value=\"/second/\"/></T>");
    EXPECT_EQ(text(v.contentFolder), "");
    v = Configuration::parse("<T><UrlBase value=\"/first/\"/><UrlBase value=\"/second/\"/></T>");
    EXPECT_EQ(text(v.contentFolder), "/first/");
}

TEST(Configuration, NothingReadable)
{
    for (const char* text : {"", "garbage", "<", "<T", "<T><UrlBase value=\"/x/", "<!-- <T> -->",
                             "?>", "<T><UrlBase value=\"a\"b c\"/></T>"})
    {
        Configuration::Values v = Configuration::parse(text);
        (void)v; // no crash, no hang
    }
    EXPECT_EQ(std::string(Configuration::parse("<T><UrlBase value=\"/x/").contentFolder.c_str()),
              "");
}
