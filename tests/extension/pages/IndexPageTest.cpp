#include "../TestSupport.h"

#include "extension/NSP.h"
#include "extension/pages/IndexPage.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
const char kHeader[] =
    "<html><head><title>Tidewell</title><style>A:link        {color: #0000FF} A:visited     "
    "{color: #0000FF} A:hover       {color: #0000FF} A:active      {color: #0000FF} </style>"
    "</head><body><table width=100% height=100% cellspacing=0 cellpadding=0><tr><td align=left "
    "valign=top height=100%>";
const char kFooter[] = "</td></tr></table></body></html>";

std::string redirect(const char* target)
{
    return std::string(kHeader) + "<script type=\"text/JavaScript\">window.location = '" + target +
           "';</script>" + kFooter;
}

// The four marker files live under a folder of the test's own (the test-only
// seam of the index page).
class IndexPage : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_root.reset(new TestSupport::TempDir("tidewell-markers"));
        TestSupport::makeDirectories(m_root->path() + "/tmp");
        TestSupport::makeDirectories(m_root->path() + "/mnt/bootdevice");
        TestSupport::makeDirectories(m_root->path() + "/mnt/automation");
        Pages::Testing::SetIndexMarkerRoot(m_root->path().c_str());
    }
    void TearDown() override { Pages::Testing::SetIndexMarkerRoot(""); }

    void mark(const char* path) { TestSupport::writeFile(m_root->path() + path, "x"); }

    std::string run(const char* page = "index.nsp", const char* query = "")
    {
        Common::string buffer;
        NSP nsp(&buffer);
        EXPECT_TRUE(nsp.Execute("GET", page, query));
        return std::string(buffer.c_str(), buffer.size());
    }

    std::unique_ptr<TestSupport::TempDir> m_root;
};
} // namespace

TEST_F(IndexPage, AnswerFilesAutomateOverRotationAndNoMarkersSelectTheLanguage)
{
    EXPECT_EQ(run(), redirect("/langsel.htm"));
    EXPECT_EQ(run("INDEX.NSP", "Command=Whatever&x=1"), redirect("/langsel.htm"));
    // isFile only asks whether the path opens for reading, and a folder does.
    TestSupport::makeDirectories(m_root->path() + "/mnt/automation/rotate.txt");
    EXPECT_EQ(run(), redirect("/rotate.htm"));
    for (const char* marker :
         {"/tmp/install.xml", "/mnt/bootdevice/install.xml", "/mnt/automation/install.xml"})
    {
        mark(marker);
        EXPECT_EQ(run("Index.Nsp"), redirect("/automate.htm")) << marker;
        std::remove((m_root->path() + marker).c_str());
    }
}

TEST_F(IndexPage, ThroughTheEntryPoint)
{
    mark("/mnt/automation/rotate.txt");
    TestSupport::Answer a = TestSupport::get("zrmedia://Tidewell/");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, redirect("/rotate.htm"));
}
