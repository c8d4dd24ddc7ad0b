#include "extension/NSP.h"
#include "extension/pages/Pages.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string text(const Common::string& s)
{
    return std::string(s.c_str(), s.size());
}

const char kHeader[] =
    "<html><head><title>T</title><style>A:link        {color: #0000FF} A:visited     {color: "
    "#0000FF} A:hover       {color: #0000FF} A:active      {color: #0000FF} </style></head><body>"
    "<table width=100% height=100% cellspacing=0 cellpadding=0><tr><td align=left valign=top "
    "height=100%>";
} // namespace

TEST(NSP, TheElevenCommandPagesAreFound)
{
    const char* names[] = {"index.nsp",        "allstorage.nsp", "debug.nsp",     "hardware.nsp",
                           "wd100.nsp",        "ostree.nsp",     "fsetreset.nsp", "reboot.nsp",
                           "setbootorder.nsp", "system.nsp",     "UNATTENDED.NSP"};
    for (const char* name : names)
        EXPECT_NE(Pages::find(name), nullptr) << name;
}

TEST(NSP, PagesNotYetAvailableAnswerErrorCodeOne)
{
    const char* pages[] = {"allstorage.nsp", "hardware.nsp", "wd100.nsp", "WD100.NSP"};
    for (const char* page : pages)
    {
        Common::string buffer;
        NSP nsp(&buffer);
        EXPECT_TRUE(nsp.Execute("GET", page, "Command=Query")) << page;
        EXPECT_EQ(text(buffer), "{\"ErrorCode\":1}") << page;
        EXPECT_EQ(text(nsp.response().buffer()), "");
    }
}

TEST(NSP, UnknownPagesAreNotHandledAndWriteNothing)
{
    const char* pages[] = {
        "unknown.nsp", "sub/index.nsp", "/index.nsp", "index.nsp ", "index", "x.htm", ""};
    for (const char* page : pages)
    {
        Common::string buffer("before");
        NSP nsp(&buffer);
        EXPECT_FALSE(nsp.Execute("GET", page, "")) << page;
        EXPECT_EQ(text(buffer), "before") << page;
    }
}

TEST(NSP, PageNamesIgnoreCase)
{
    for (const char* page : {"INDEX.NSP", "Index.Nsp", "index.nsp"})
    {
        Common::string buffer;
        NSP nsp(&buffer);
        EXPECT_TRUE(nsp.Execute("GET", page, "")) << page;
        EXPECT_NE(text(buffer).find("window.location"), std::string::npos) << page;
    }
}

TEST(NSP, RequestIsReplacedOnEveryExecute)
{
    Common::string buffer;
    NSP nsp(&buffer);
    EXPECT_EQ(nsp.request().parameters().size(), 1u); // an empty GET query
    EXPECT_EQ(std::string(nsp.request().method().c_str()), "GET");
    nsp.Execute("GET", "nothing.htm", "a=1");
    EXPECT_EQ(std::string(nsp.request()("a").c_str()), "1");
    nsp.Execute("POST", "nothing.htm", "a=1");
    EXPECT_EQ(std::string(nsp.request()("a").c_str()), "");
}

TEST(NSP, HtmlFrame)
{
    Common::string buffer;
    NSP nsp(&buffer);
    nsp.HTMLHeader("T");
    nsp.HTMLFooter();
    nsp.response().Flush();
    EXPECT_EQ(text(buffer), std::string(kHeader) + "</td></tr></table></body></html>");

    Common::string raw;
    NSP other(&raw);
    other.HTMLHeader("<b>&</b>"); // not escaped
    other.response().Flush();
    EXPECT_NE(text(raw).find("<title><b>&</b></title>"), std::string::npos);
}
