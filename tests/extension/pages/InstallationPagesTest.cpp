#include "../TestSupport.h"
#include "tests/support/SmallFileSystem.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using TestSupport::get;

TEST(OSTreePage, AnswersTheTreeOfTheOfferedSystemsAsTheWholePage)
{
    EXPECT_EQ("{label:'name',identifier:'name',items:[]}",
              get("zrmedia://Tidewell/ostree.nsp?OSIDList=&Selected=").page);
    EXPECT_EQ(
        "{label:'name',identifier:'name',items:["
        "{name:'Microsoft Windows 2008 x64 Edition',type:'treeiconfolder',selected:false,children:["
        "{ type:'treeiconcd',selected:false,osid:'5b0010',"
        "name:'Microsoft Windows Server 2008 x64, Data Center Edition (ZR-Branded)' }]}]}",
        get("zrmedia://Tidewell/OSTREE.NSP?Selected=5b0010&OSIDList=5b0010,nothing").page);
}

// The documents are checked in the collection's own tests; here, that the
// page writes them and leaves no cut file on a full disk.
TEST(UnattendedPage, WritesTheAnswerFileOfThePlatformAndNoCutFileOnAFullDisk)
{
    ScratchFolder dir;
    const std::string query = "unattended.nsp?FullName=Ops&ComputerName=node7&Platform=";
    TestSupport::SmallFileSystem full("64k");
    if (!full.refusal().empty())
        GTEST_SKIP() << full.refusal();
    for (const char* platform : {"W2K8_X64", "W2K3"})
    {
        ASSERT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"0\"}",
                  get(query + platform + "&Filename=" + dir.path(platform)).page);
        full.fill(TestSupport::readFile(dir.path(platform)).size() / 2);
        EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"1\"}",
                  get(query + platform + "&Filename=" + full.file(platform)).page);
        EXPECT_FALSE(std::filesystem::exists(full.file(platform))) << platform << ": a cut file";
        std::filesystem::remove(full.file("filler"));
    }
}
