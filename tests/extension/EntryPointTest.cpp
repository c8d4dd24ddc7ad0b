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

TEST(EntryPoint, ServesFilesFromTheNormalisedURL)
{
    putContent("served.htm", "N");
    putContent("bin.dat", std::string("a\0b\0c", 5));
    putContent("empty.htm", "");
    putContent("q?x.htm", "Q");
    putContent("q", "only q");
    putContent("a b.htm", "AB");
    putContent("unknown.nsp", "a file");
    TestSupport::makeDirectories(TestSupport::contentFolder() + "a-folder");
    // Includes are expanded in .htm and .html pages only.
    putContent("ext/x.htm", "X");
    for (char const* name : {"ext/a.HTM", "ext/a.html", "ext/a.txt", "ext/a.htmx"})
        putContent(name, "<?include x.htm?>");

    struct
    {
        char const* url;
        int result;
        std::string page;
    } const cases[] = {
        {"zrmedia://Tidewell/bin.dat", 0, std::string("a\0b\0c", 5)},
        {"empty.htm", 0, ""},
        {"no-such-file.htm", 1, ""},
        {"a-folder", 1, ""}, // a folder is not served
        {"unknown.nsp", 0, "a file"},
        {"ZRMEDIA://TIDEWELL/served.htm", 0, "N"},
        {"zrmedia://tidewell/served.htm?x=1#top", 0, "N"},
        {"zrmedia%3A%2F%2FTidewell%2Fserved.htm", 0, "N"},
        {"//served.htm", 0, "N"}, // content folder + "/served.htm"
        {"q%3Fx.htm", 0, "Q"},
        {"q?x.htm", 0, "only q"}, // a real "?" starts the query
        {"a+b.htm", 0, "AB"},
        {"a%2Bb.htm", 0, "AB"},
        {"ext/a.HTM", 0, "X"},
        {"ext/a.html", 0, "X"},
        {"ext/a.txt", 0, "<?include x.htm?>"},
        {"ext/a.htmx", 0, "<?include x.htm?>"},
    };
    for (auto const& c : cases)
    {
        Answer a = get(c.url);
        EXPECT_EQ(a.result, c.result) << c.url;
        EXPECT_EQ(a.page, c.page) << c.url;
    }
    for (const char* url : {"", "zrmedia://", "zrmedia://Tidewell/"})
        EXPECT_NE(get(url).page.find("window.location"), std::string::npos) << url;
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

TEST_F(FakePHP, PhpPagesRunThroughPhpWithoutIncludeExpansion)
{
    putContent("script.php", "<?php echo 1; ?>");
    EXPECT_EQ(get("zrmedia://Tidewell/script.php?x=1").page,
              "php[-f][" + TestSupport::contentFolder() + "script.php]:<?php echo 1; ?>");
    putContent("INC.PHP", "<?include x.htm?>");
    putContent("x.htm", "X");
    EXPECT_EQ(get("INC.PHP").page,
              "php[-f][" + TestSupport::contentFolder() + "INC.PHP]:<?include x.htm?>");
    // A name with ".php" twice is served as a file.
    putContent("a.php.php", "served as a file");
    EXPECT_EQ(get("a.php.php").page, "served as a file");
}

TEST_F(FakePHP, ShellCharactersInAPhpPageNameStayInItsPath)
{
    TestSupport::TempDir marks("tidewell-marks");
    const std::string mark = marks.file("ran");
    for (const std::string& name :
         {"a;touch " + mark + ";.php", "a`touch " + mark + "`.php", "a$(touch " + mark + ").php",
          "a'$(touch " + mark + ")'.php", "a\"$(touch " + mark + ")\".php",
          "a\ntouch " + mark + "\n.php", "a%0Atouch%20" + mark + "%0A.php"})
    {
        // The page does not exist: php gets its path as one argument and
        // finds nothing to run.
        EXPECT_EQ(get(name).page.rfind("php[-f][" + TestSupport::contentFolder() + "a", 0), 0u)
            << name;
        EXPECT_FALSE(TestSupport::exists(mark)) << name;
    }
    putContent("it's $(here).php", "found");
    EXPECT_EQ(get("it's $(here).php").page,
              "php[-f][" + TestSupport::contentFolder() + "it's $(here).php]:found");
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
