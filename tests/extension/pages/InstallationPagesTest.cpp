#include "../TestSupport.h"

#include <gtest/gtest.h>

#include <string>

using TestSupport::get;

TEST(OSTreePage, AnswersTheTreeOfTheOfferedSystemsAsTheWholePage)
{
    TestSupport::Answer empty = get("zrmedia://Tidewell/ostree.nsp?OSIDList=&Selected=");
    EXPECT_EQ(0, empty.result);
    EXPECT_EQ("{label:'name',identifier:'name',items:[]}", empty.page);

    TestSupport::Answer one =
        get("zrmedia://Tidewell/OSTREE.NSP?Selected=5b0010&OSIDList=5b0010,nothing");
    EXPECT_EQ(
        "{label:'name',identifier:'name',items:["
        "{name:'Microsoft Windows 2008 x64 Edition',type:'treeiconfolder',selected:false,children:["
        "{ type:'treeiconcd',selected:false,osid:'5b0010',"
        "name:'Microsoft Windows Server 2008 x64, Data Center Edition (ZR-Branded)' }]}]}",
        one.page);
}

// The platform rules and the documents themselves are checked in the
// collection's own tests; here, that the page reaches them.
TEST(UnattendedPage, WritesTheAnswerFileOfThePlatformAndReportsWhetherItCould)
{
    TestSupport::TempDir dir;
    std::string xmlFile = dir.file("unattend.xml");
    TestSupport::Answer xml =
        get("zrmedia://Tidewell/unattended.nsp?Platform=W2K8_X64&FullName=Ops&Filename=" + xmlFile);
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"0\"}", xml.page);
    std::string written = TestSupport::readFile(xmlFile);
    EXPECT_EQ(0u, written.find("<?xml"));
    EXPECT_NE(std::string::npos, written.find("<FullName>Ops</FullName>"));
    EXPECT_NE(std::string::npos, written.find("amd64"));

    TestSupport::Answer unwritable =
        get("zrmedia://Tidewell/unattended.nsp?Platform=W2K3&Filename=" +
            dir.file("no/such/folder/file"));
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"1\"}", unwritable.page);
}
