#include "../TestSupport.h"

#include "extension/pages/IndexPage.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace
{
std::string redirect(const char* target)
{
    return std::string("<html><head><title>Tidewell</title><style>A:link        {color: #0000FF} "
                       "A:visited     {color: #0000FF} A:hover       {color: #0000FF} A:active  "
                       "    {color: #0000FF} </style></head><body><table width=100% height=100% "
                       "cellspacing=0 cellpadding=0><tr><td align=left valign=top height=100%>"
                       "<script type=\"text/JavaScript\">window.location = '") +
           target + "';</script></td></tr></table></body></html>";
}
} // namespace

// The marker files live under a folder of the test's own (the page's seam).
TEST(IndexPage, AnswerFilesAutomateOverRotationAndNoMarkersSelectTheLanguage)
{
    ScratchFolder root;
    for (const char* folder : {"/tmp", "/mnt/bootdevice", "/mnt/automation"})
        std::filesystem::create_directories(root.path() + folder);
    Pages::Testing::SetIndexMarkerRoot(root.path().c_str());
    EXPECT_EQ(TestSupport::runPage("index.nsp", ""), redirect("/langsel.htm"));
    EXPECT_EQ(TestSupport::runPage("INDEX.NSP", "Command=Whatever"), redirect("/langsel.htm"));
    // Only whether the path opens for reading counts, and a folder does.
    std::filesystem::create_directories(root.path() + "/mnt/automation/rotate.txt");
    EXPECT_EQ(TestSupport::get("zrmedia://Tidewell/").page, redirect("/rotate.htm"));
    for (const char* marker :
         {"/tmp/install.xml", "/mnt/bootdevice/install.xml", "/mnt/automation/install.xml"})
    {
        TestSupport::writeFile(root.path() + marker, "x");
        EXPECT_EQ(TestSupport::runPage("Index.Nsp", ""), redirect("/automate.htm")) << marker;
        std::filesystem::remove(root.path() + marker);
    }
    Pages::Testing::SetIndexMarkerRoot("");
}
