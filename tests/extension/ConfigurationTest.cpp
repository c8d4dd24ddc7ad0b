#include "extension/Configuration.h"

#include <gtest/gtest.h>

#include <string>

TEST(Configuration, FileBesideTheHost)
{
    const std::pair<const char*, const char*> cases[] = {
        {"/opt/ui/iexplore", "/opt/ui/TIDEWELL.XML"},
        {"/opt/ui/IEXPLORE.EXE", "/opt/ui/TIDEWELL.XML"},
        {"C:\\Program Files\\iexplore.exe", "C:/Program Files/TIDEWELL.XML"},
        {"/iexplore", "/TIDEWELL.XML"},
        {"/opt/iexplore/bin/shell", "/opt/iexplore/bin/TIDEWELL.XML"},
        {"/opt/ff/FireFox", "/opt/ff/components/zrmedia/TIDEWELL.XML"},
        {"/opt/ff/firefox-bin", "/opt/ff/components/zrmedia/TIDEWELL.XML"},
        {"/firefox/iexplore", "/firefox/TIDEWELL.XML"}, // "iexplore" wins
        {"/usr/bin/ctest", ""},
        {"", ""},
    };
    for (auto const& c : cases)
        EXPECT_STREQ(Configuration::fileFor(Common::istring(c.first)).c_str(), c.second) << c.first;
}

TEST(Configuration, EntriesTheFirstOfEachTagWithAValue)
{
    Configuration::Values v =
        Configuration::parse("<?xml version=\"1.0\"?>\n<!-- the UI -->\n<TIDEWELL>\n"
                             "  <ExtensionModule value=\"C:\\ui\\ext.dll\"/>\n"
                             "  <WorkingDir value='D:\\work'/>\n"
                             "  <UrlBase value=\"/srv/content/\"></UrlBase>\n"
                             "  <UrlBase value=\"/second/\"/>\n</TIDEWELL>\n");
    EXPECT_STREQ(v.extensionModule.c_str(), "C:/ui/ext.dll");
    EXPECT_STREQ(v.workingFolder.c_str(), "D:/work");
    EXPECT_STREQ(v.contentFolder.c_str(), "/srv/content/");
    // No "value", a tag in other letter case, a first element without value,
    // and broken texts (no crash, no hang).
    for (const char* text :
         {"<T><UrlBase path=\"/x/\"/><urlbase value=\"/y/\"/></T>",
          "<T><UrlBase/><UrlBase value=\"/second/\"/></T>", "", "garbage", "<", "<T",
          "<T><UrlBase value=\"/x/", "<!-- <T> -->", "?>", "<T><UrlBase value=\"a\"b c\"/></T>"})
        EXPECT_STREQ(Configuration::parse(text).contentFolder.c_str(), "") << text;
}
