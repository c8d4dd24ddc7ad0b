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

// The platform rules and the documents themselves are checked in the
// collection's own tests; here, that the page reaches them and reports
// whether the file could be written, leaving no cut file on a full disk.
TEST(UnattendedPage, WritesTheAnswerFileOfThePlatformAndReportsWhetherItCould)
{
    ScratchFolder dir;
    const std::string query = "unattended.nsp?FullName=Ops&ComputerName=node7&Platform=";
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"0\"}",
              get(query + "W2K8_X64&Filename=" + dir.path("u.xml")).page);
    const std::string written = TestSupport::readFile(dir.path("u.xml"));
    EXPECT_EQ(0u, written.find("<?xml"));
    EXPECT_NE(std::string::npos, written.find("<FullName>Ops</FullName>"));
    EXPECT_NE(std::string::npos, written.find("amd64"));
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"1\"}",
              get(query + "W2K3&Filename=" + dir.path("no/such/file")).page);

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
