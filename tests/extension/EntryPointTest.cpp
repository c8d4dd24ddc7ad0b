// Routing tests through the exported entry point, against the content folder
// of TestSupport's global environment.

#include "TestSupport.h"

#include "common/ModuleName.h"
#include "extension/Extension.h"
#include "extension/TestSeams.h"
#include "extension/ZRAPPExtension.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using TestSupport::Answer;
using TestSupport::get;
using TestSupport::putContent;

TEST(EntryPoint, ReadsTheConfigurationBesideTheHost)
{
    InitializeLibrary();
    EXPECT_EQ(std::string(Common::moduleName().c_str()), TestSupport::hostFolder() + "/iexplore");
    EXPECT_EQ(std::string(g_contentFolder.c_str()), TestSupport::contentFolder());
    EXPECT_EQ(std::string(g_extensionModule.c_str()), "C:/tidewell/libtidewell.so");
    EXPECT_EQ(std::string(g_workingFolder.c_str()), TestSupport::hostFolder());
    InitializeLibrary(); // idempotent
    EXPECT_EQ(std::string(g_contentFolder.c_str()), TestSupport::contentFolder());
}

TEST(EntryPoint, ServesFiles)
{
    putContent("served.htm", "<p>served</p>");
    putContent("bin.dat", std::string("a\0b\0c", 5));
    Answer a = get("served.htm");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "<p>served</p>");
    a = get("zrmedia://Tidewell/bin.dat");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, std::string("a\0b\0c", 5));
    putContent("empty.htm", "");
    a = get("empty.htm");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "");
}

TEST(EntryPoint, MissingFileIsResultOne)
{
    Answer a = get("no-such-file.htm");
    EXPECT_EQ(a.result, 1);
    EXPECT_EQ(a.page, "");
    // A folder is not served.
    TestSupport::makeDirectories(TestSupport::contentFolder() + "a-folder");
    a = get("a-folder");
    EXPECT_EQ(a.result, 1);
    EXPECT_EQ(a.page, "");
}

TEST(EntryPoint, NormalisationReachesTheFile)
{
    putContent("norm.htm", "N");
    for (const char* url :
         {"norm.htm", "/norm.htm", "zrmedia://norm.htm", "ZRMEDIA://TIDEWELL/norm.htm",
          "zrmedia://tidewell/norm.htm?x=1#top", "norm.htm#frag", "norm.htm?a=1?a=1", "%6Eorm.htm",
          "zrmedia%3A%2F%2FTidewell%2Fnorm.htm", "Tidewellnorm.htm"})
    {
        Answer a = get(url);
        EXPECT_EQ(a.result, 0) << url;
        EXPECT_EQ(a.page, "N") << url;
    }
}

TEST(EntryPoint, EscapedQuestionMarkStaysInTheName)
{
    putContent("q?x.htm", "Q");
    putContent("q", "only q");
    Answer a = get("q%3Fx.htm");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "Q");
    a = get("q?x.htm");
    EXPECT_EQ(a.page, "only q"); // a real "?" starts the query
    putContent("a b.htm", "AB");
    EXPECT_EQ(get("a+b.htm").page, "AB");
    EXPECT_EQ(get("a%20b.htm").page, "AB");
    EXPECT_EQ(get("a%2Bb.htm").page, "AB");
}

TEST(EntryPoint, DoubleSlashLosesOnlyOne)
{
    putContent("dslash.htm", "D");
    Answer a = get("//dslash.htm");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "D"); // content folder + "/dslash.htm"
}

TEST(EntryPoint, EmptyURLIsTheStartPage)
{
    for (const char* url : {"", "zrmedia://", "zrmedia:///", "zrmedia://Tidewell/"})
    {
        Answer a = get(url);
        EXPECT_EQ(a.result, 0) << url;
        EXPECT_NE(a.page.find("window.location"), std::string::npos) << url;
    }
}

TEST(EntryPoint, AbsolutePathFallback)
{
    TestSupport::TempDir outside("tidewell-outside");
    TestSupport::writeFile(outside.file("abs.txt"), "absolute");
    // "zrmedia:///tmp/.../abs.txt" -> "tmp/.../abs.txt", not in the content
    // folder, so "/tmp/.../abs.txt" is opened.
    Answer a = get("zrmedia://" + outside.file("abs.txt"));
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "absolute");
    // The content folder comes first.
    std::string relative = outside.file("abs.txt").substr(1);
    putContent(relative, "from content");
    a = get("zrmedia://" + outside.file("abs.txt"));
    EXPECT_EQ(a.page, "from content");
}

TEST(EntryPoint, IncludesInHtmlPages)
{
    putContent("inc/page.htm", "[<?include part.htm?>|<?include /inc-shared.htm?>|"
                               "<?include part.htm ?>|<?include ?>]");
    putContent("inc/part.htm", "P<?include deeper/d.htm?>");
    putContent("inc/deeper/d.htm", "D");
    putContent("inc-shared.htm", "S");
    Answer a = get("inc/page.htm");
    EXPECT_EQ(a.result, 0);
    // Relative names resolve against the page's folder, also inside included
    // text (which stays the page's folder, not the included file's).
    EXPECT_EQ(a.page, "[PD|S||]");
}

TEST(EntryPoint, IncludeNameWithTrailingBlank)
{
    putContent("blank/page.htm", "<?include x.htm ?>");
    putContent("blank/x.htm ", "with blank");
    putContent("blank/x.htm", "without");
    EXPECT_EQ(get("blank/page.htm").page, "with blank");
}

TEST(EntryPoint, IncludesOnlyInHtmAndHtml)
{
    putContent("ext/x.htm", "X");
    putContent("ext/a.html", "<?include x.htm?>");
    putContent("ext/a.HTM", "<?include x.htm?>");
    putContent("ext/a.txt", "<?include x.htm?>");
    putContent("ext/a.nsp", "<?include x.htm?>");
    putContent("ext/a.htmx", "<?include x.htm?>");
    EXPECT_EQ(get("ext/a.html").page, "X");
    EXPECT_EQ(get("ext/a.HTM").page, "X");
    EXPECT_EQ(get("ext/a.txt").page, "<?include x.htm?>");
    EXPECT_EQ(get("ext/a.nsp").page, "<?include x.htm?>"); // an unknown .nsp is a file
    EXPECT_EQ(get("ext/a.htmx").page, "<?include x.htm?>");
}

TEST(EntryPoint, IncludeWithoutCloseIsServedUnchanged)
{
    putContent("open.htm", "a<?include x.htm");
    EXPECT_EQ(get("open.htm").page, "a<?include x.htm");
}

TEST(EntryPoint, SelfIncludingPageTerminates)
{
    putContent("self.htm", "a<?include self.htm?>b");
    Answer a = get("self.htm");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, std::string(1001, 'a') + "<?include self.htm?>" + std::string(1001, 'b'));
}

TEST(EntryPoint, UnknownNspIsAFile)
{
    putContent("unknown.nsp", "a file");
    Answer a = get("unknown.nsp");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "a file");
}

TEST(EntryPoint, PagesAreNeverFiles)
{
    putContent("wd100.nsp", "must not be served");
    putContent("system.nsp", "must not be served");
    for (const char* url : {"wd100.nsp", "WD100.NSP?Command=x"})
    {
        Answer a = get(url);
        EXPECT_EQ(a.result, 0) << url;
        EXPECT_EQ(a.page, "{\"ErrorCode\":1}") << url;
    }
    EXPECT_EQ(get("system.nsp?Command=Query").page, "{\"ErrorCode\":0,\"Platform\":\"Linux\"}");
    // With a folder in front it is no page: a file.
    putContent("sub/index.nsp", "sub index");
    EXPECT_EQ(get("sub/index.nsp").page, "sub index");
}

namespace
{
// A "php" of our own on the search path, so that the command line is seen
// without a real interpreter: it prints its arguments and the page.
class FakePHP : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_bin.reset(new TestSupport::TempDir("tidewell-fakephp"));
        TestSupport::writeFile(m_bin->file("php"),
                               "#!/bin/sh\nprintf 'php[%s][%s]:' \"$1\" \"$2\"\ncat \"$2\"\n");
        ::chmod(m_bin->file("php").c_str(), 0755);
        const char* path = std::getenv("PATH");
        m_path = path ? path : "/usr/bin:/bin";
        ::setenv("PATH", (m_bin->path() + ":" + m_path).c_str(), 1);
    }
    void TearDown() override { ::setenv("PATH", m_path.c_str(), 1); }

private:
    std::unique_ptr<TestSupport::TempDir> m_bin;
    std::string m_path;
};
} // namespace

TEST_F(FakePHP, PhpPagesRunThroughPhp)
{
    putContent("script.php", "<?php echo 1; ?>");
    Answer a = get("zrmedia://Tidewell/script.php?x=1");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "php[-f][" + TestSupport::contentFolder() + "script.php]:<?php echo 1; ?>");
    putContent("SCRIPT.PHP", "upper");
    a = get("SCRIPT.PHP");
    EXPECT_EQ(a.page, "php[-f][" + TestSupport::contentFolder() + "SCRIPT.PHP]:upper");
}

TEST_F(FakePHP, PhpOutputGetsNoIncludeExpansion)
{
    putContent("inc.php", "<?include x.htm?>");
    putContent("x.htm", "X");
    EXPECT_EQ(get("inc.php").page,
              "php[-f][" + TestSupport::contentFolder() + "inc.php]:<?include x.htm?>");
}

TEST_F(FakePHP, OnlyTheFirstPhpCounts)
{
    putContent("a.php.php", "served as a file");
    Answer a = get("a.php.php");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "served as a file");
}

TEST(EntryPoint, RealPhpWhenInstalled)
{
    if (std::system("command -v php >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "no php interpreter installed";
    putContent("real.php", "<?php echo 6 * 7; ?>");
    Answer a = get("real.php");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "42");
}

TEST(EntryPoint, HostMistakes)
{
    putContent("host.htm", "H");
    uint32_t text = 0;
    uint32_t length = 99;
    // No request block at all.
    EXPECT_EQ(ZRAPPExtensionProc(nullptr, &text, &length), 1);
    EXPECT_EQ(length, 0u);
    ASSERT_NE(text, 0u);
    EXPECT_EQ(*reinterpret_cast<const char*>(static_cast<uintptr_t>(text)), '\0');
    // A null URL.
    const char* nullURL[] = {nullptr, "", "", "GET"};
    length = 99;
    EXPECT_EQ(ZRAPPExtensionProc(nullURL, &text, &length), 1);
    EXPECT_EQ(length, 0u);
    // A short block: the URL only, then the end.
    const char* shortBlock[] = {"host.htm", nullptr};
    EXPECT_EQ(ZRAPPExtensionProc(shortBlock, &text, &length), 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(static_cast<uintptr_t>(text)), length),
              "H");
    // Null outputs are not written.
    const char* full[] = {"host.htm", "", "", "GET"};
    EXPECT_EQ(ZRAPPExtensionProc(full, nullptr, nullptr), 0);
    EXPECT_EQ(ZRAPPExtensionProc(full, &text, nullptr), 0);
    EXPECT_EQ(ZRAPPExtensionProc(full, nullptr, &length), 0);
    EXPECT_EQ(length, 1u);
}

TEST(EntryPoint, MissingMethodReadsTheQuery)
{
    // With slots 1 and 2 null the method is not read: "" is not "POST".
    const char* block[] = {"debug.nsp?Command=Log&Message=no-method", nullptr, nullptr, "POST"};
    uint32_t text = 0;
    uint32_t length = 0;
    testing::internal::CaptureStdout();
    EXPECT_EQ(ZRAPPExtensionProc(block, &text, &length), 0);
    std::string console = testing::internal::GetCapturedStdout();
    EXPECT_NE(console.find("] no-method\r\n"), std::string::npos);
}

TEST(EntryPoint, BrokenEscapesAndEnormousURLs)
{
    for (const char* url : {"%", "a%", "a%4", "%%%", "%zz.htm", "%G1%", "zrmedia://%"})
    {
        Answer a = get(url);
        EXPECT_EQ(a.result, 1) << url;
        EXPECT_EQ(a.page, "") << url;
    }
    std::string huge(8u << 20, 'a');
    Answer a = get(huge + ".htm?" + std::string(1u << 20, 'q') + "#" + huge);
    EXPECT_EQ(a.result, 1);
    std::string escapes;
    for (int i = 0; i < 1000000; ++i)
        escapes += "%41";
    a = get(escapes);
    EXPECT_EQ(a.result, 1);
}

TEST(EntryPoint, PageStaysValidUntilTheNextCall)
{
    putContent("first.htm", "first page");
    putContent("second.htm", "second");
    const char* block1[] = {"first.htm", "", "", "GET"};
    const char* block2[] = {"second.htm", "", "", "GET"};
    uint32_t text1 = 0, length1 = 0, text2 = 0, length2 = 0;
    ZRAPPExtensionProc(block1, &text1, &length1);
    const char* page1 = reinterpret_cast<const char*>(static_cast<uintptr_t>(text1));
    EXPECT_EQ(std::string(page1, length1), "first page");
    // Reading it again after unrelated work is fine (nothing else touches it).
    EXPECT_EQ(std::string(page1, length1), "first page");
    ZRAPPExtensionProc(block2, &text2, &length2);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(static_cast<uintptr_t>(text2)), length2),
              "second");
}

namespace
{
void throwBadAlloc(const char* url)
{
    if (std::string(url) == "throw.htm")
        throw std::bad_alloc();
}
} // namespace

TEST(EntryPoint, ExceptionsNeverReachTheHost)
{
    putContent("throw.htm", "never");
    putContent("after.htm", "after");
    Testing::SetRouteHook(&throwBadAlloc);
    Answer a = get("throw.htm");
    EXPECT_EQ(a.result, 1);
    EXPECT_EQ(a.page, "");
    a = get("after.htm");
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "after");
    Testing::SetRouteHook(nullptr);
}
