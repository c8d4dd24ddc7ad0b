#include "TestSupport.h"

#include "extension/TestSeams.h"
#include "extension/ZRAPPExtension.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>
#include <sys/stat.h>

using TestSupport::Answer;
using TestSupport::get;
using TestSupport::putContent;

namespace
{
std::string text(uint32_t address, uint32_t length)
{
    return std::string(reinterpret_cast<const char*>(static_cast<uintptr_t>(address)), length);
}
} // namespace

TEST(EntryPoint, NormalisesAndDecodesTheURLThenServesTheFileItNames)
{
    const struct
    {
        const char* url;
        std::string file;
    } cases[] = {
        {"zrmedia://Tidewell/n.htm?x=1#top", "n.htm"},
        {"ZrMeDiA://tIdEwElL/n.htm", "n.htm"},
        {"zrmedia://n.htm", "n.htm"},
        {"Tidewell/n.htm", "n.htm"},
        {"zrmedia://TidewellX.htm", "X.htm"},
        {"zrmedia://Tidewell//n.htm", "n.htm"}, // content folder + "/n.htm"
        {"/Tidewell/n.htm", "Tidewell/n.htm"},  // one "/" goes, "Tidewell" only behind the scheme
        {"zrmedia:/n.htm", "zrmedia:/n.htm"},
        {"n.htm#b?c=1", "n.htm"},
        {"n.htm?A=1?a=1?a=1", "n.htm"},
        {"q?x.htm", "q"},
        // "?" and "#" split before decoding, the prefixes are stripped after.
        {"a%3Fx.htm?q=%41", "a?x.htm"},
        {"a%23b.htm", "a#b.htm"},
        {"zrmedia%3A%2F%2FTidewell%2Fn.htm", "n.htm"},
        // "+" and an escaped "+" are blanks; a decoded "%" is not decoded again.
        {"a+b%2Bc%2bd.htm", "a b c d.htm"},
        {"%2541", "%41"},
        // A broken escape decodes by the digit rule, never reading past the end.
        {"x%zz", "xS"},
        {"y.htm%", "y.htm\xD0"},
        {"unknown.nsp", "unknown.nsp"},
        {"sub/index.nsp", "sub/index.nsp"},
        {"index.nsp%20", "index.nsp "},
    };
    for (auto const& c : cases)
        putContent(c.file, c.file);
    for (auto const& c : cases)
    {
        Answer a = get(c.url);
        EXPECT_EQ(a.result, 0) << c.url;
        EXPECT_EQ(a.page, c.file) << c.url;
    }
    for (const char* url : {"", "zrmedia://", "zrmedia:///", "/", "Tidewell", "zrmedia://Tidewell",
                            "zrmedia://Tidewell/", "?a=1", "#x", "zrmedia://#x", "INDEX.NSP"})
        EXPECT_NE(get(url).page.find("window.location"), std::string::npos) << url;
}

TEST(EntryPoint, ServesFilesAsTheyAreExceptIncludesInHtmlPagesAndNeverCommandPages)
{
    putContent("bin.dat", std::string("a\0b\0c", 5));
    putContent("wd100.nsp", "must not be served");
    putContent("system.nsp", "must not be served");
    putContent("empty.htm", "");
    std::filesystem::create_directories(TestSupport::contentFolder() + "a-folder");
    putContent("ext/x.htm", "X");
    for (char const* name :
         {"ext/a.HTM", "ext/a.html", "ext/a.htmx", "ext/a.shtml", "ext/a.ht", "ext.htm/name"})
        putContent(name, "<?include x.htm?>");
    const struct
    {
        char const* url;
        int result;
        std::string page;
    } cases[] = {
        {"bin.dat", 0, std::string("a\0b\0c", 5)},
        {"empty.htm", 0, ""},
        {"no-such-file.htm", 1, ""},
        {"a-folder", 1, ""}, // a folder is not served
        {"%00", 1, ""},      // a name, not the start page
        {"ext/a.HTM", 0, "X"},
        {"ext/a.html", 0, "X"},
        {"ext/a.htmx", 0, "<?include x.htm?>"},
        {"ext/a.shtml", 0, "<?include x.htm?>"},
        {"ext/a.ht", 0, "<?include x.htm?>"},
        {"ext.htm/name", 0, "<?include x.htm?>"},
        {"wd100.nsp", 0, "{\"ErrorCode\":1}"},
        {"WD100.NSP?Command=x", 0, "{\"ErrorCode\":1}"},
        {"system.nsp?Command=Query", 0, "{\"ErrorCode\":0,\"Platform\":\"Linux\"}"},
    };
    for (auto const& c : cases)
    {
        Answer a = get(c.url);
        EXPECT_EQ(a.result, c.result) << c.url;
        EXPECT_EQ(a.page, c.page) << c.url;
    }
    // An absolute path is looked for in the content folder first.
    ScratchFolder outside;
    TestSupport::writeFile(outside.path("abs.txt"), "absolute");
    EXPECT_EQ(get("zrmedia://" + outside.path("abs.txt")).page, "absolute");
    putContent(outside.path("abs.txt").substr(1), "from content");
    EXPECT_EQ(get("zrmedia://" + outside.path("abs.txt")).page, "from content");
}

namespace
{
// A "php" of our own first on the search path: it prints its arguments and
// the page, so the command line is seen without a real interpreter.
class FakePHP : public ::testing::Test
{
protected:
    void SetUp() override
    {
        TestSupport::writeFile(m_bin.path("php"),
                               "#!/bin/sh\nprintf 'php[%s][%s]:' \"$1\" \"$2\"\ncat \"$2\"\n");
        ::chmod(m_bin.path("php").c_str(), 0755);
        const char* path = std::getenv("PATH");
        m_path = path ? path : "/usr/bin:/bin";
        ::setenv("PATH", (m_bin.path() + ":" + m_path).c_str(), 1);
    }
    void TearDown() override { ::setenv("PATH", m_path.c_str(), 1); }

    static std::string ran(const std::string& name, const std::string& page)
    {
        return "php[-f][" + TestSupport::contentFolder() + name + "]:" + page;
    }

private:
    ScratchFolder m_bin;
    std::string m_path;
};
} // namespace

TEST_F(FakePHP, PhpPagesRunThroughPhpWithoutIncludeExpansion)
{
    putContent("script.php", "<?php echo 1; ?>");
    EXPECT_EQ(get("zrmedia://Tidewell/script.php?x=1").page, ran("script.php", "<?php echo 1; ?>"));
    putContent("x/INC.PHP", "<?include x.htm?>");
    EXPECT_EQ(get("x/INC.PHP").page, ran("x/INC.PHP", "<?include x.htm?>"));
    // ".php" must end a name longer than four characters, and come once.
    for (const char* name : {".php", "a.php.php", "a.php.htm", "a.phps"})
    {
        putContent(name, "a file");
        EXPECT_EQ(get(name).page, "a file") << name;
    }
}

TEST_F(FakePHP, ShellCharactersInAPhpPageNameStayInItsPath)
{
    ScratchFolder marks;
    const std::string mark = marks.path("ran");
    for (const std::string& name :
         {"a;touch " + mark + ";.php", "a`touch " + mark + "`.php", "a$(touch " + mark + ").php",
          "a'$(touch " + mark + ")'.php", "a\"$(touch " + mark + ")\".php",
          "a\ntouch " + mark + "\n.php", "a%0Atouch%20" + mark + "%0A.php"})
    {
        // No such page: php gets its path as one argument and finds nothing.
        EXPECT_EQ(get(name).page.rfind("php[-f][" + TestSupport::contentFolder() + "a", 0), 0u)
            << name;
        EXPECT_FALSE(std::filesystem::exists(mark)) << name;
    }
    putContent("it's $(here).php", "found");
    EXPECT_EQ(get("it's $(here).php").page, ran("it's $(here).php", "found"));
}

TEST(EntryPoint, HostMistakes)
{
    putContent("host.htm", "H");
    uint32_t page = 0;
    uint32_t length = 99;
    EXPECT_EQ(ZRAPPExtensionProc(nullptr, &page, &length), 1);
    EXPECT_EQ(length, 0u);
    ASSERT_NE(page, 0u);
    EXPECT_EQ(text(page, 1), std::string(1, '\0'));
    const char* nullURL[] = {nullptr, "", "", "GET"};
    length = 99;
    EXPECT_EQ(ZRAPPExtensionProc(nullURL, &page, &length), 1);
    EXPECT_EQ(length, 0u);
    // A short block: the URL only, then the end.
    const char* shortBlock[] = {"host.htm", nullptr};
    EXPECT_EQ(ZRAPPExtensionProc(shortBlock, &page, &length), 0);
    EXPECT_EQ(text(page, length), "H");
    // Null outputs are not written.
    const char* full[] = {"host.htm", "", "", "GET"};
    EXPECT_EQ(ZRAPPExtensionProc(full, nullptr, nullptr), 0);
    EXPECT_EQ(ZRAPPExtensionProc(full, &page, nullptr), 0);
    EXPECT_EQ(ZRAPPExtensionProc(full, nullptr, &length), 0);
    EXPECT_EQ(length, 1u);
    // With slots 1 and 2 null the method is not read: "" is not "POST".
    const char* noMethod[] = {"debug.nsp?Command=Log&Message=no-method", nullptr, nullptr, "POST"};
    testing::internal::CaptureStdout();
    EXPECT_EQ(ZRAPPExtensionProc(noMethod, &page, &length), 0);
    EXPECT_NE(testing::internal::GetCapturedStdout().find("] no-method\r\n"), std::string::npos);
}

TEST(EntryPoint, BrokenEscapesAndEnormousURLs)
{
    for (const char* url : {"%", "a%", "a%4", "%%%", "%zz.htm", "%G1%", "zrmedia://%"})
        EXPECT_EQ(get(url).result, 1) << url;
    std::string huge(8u << 20, 'a');
    EXPECT_EQ(get(huge + ".htm?" + std::string(1u << 20, 'q') + "#" + huge).result, 1);
    std::string escapes;
    for (int i = 0; i < 1000000; ++i)
        escapes += "%41+";
    putContent("big.htm", "big");
    EXPECT_EQ(get(escapes + "?" + escapes).result, 1);
    EXPECT_EQ(get("big.htm?" + escapes + "?" + escapes).page, "big");
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
    EXPECT_EQ(get("after.htm").page, "after");
    Testing::SetRouteHook(nullptr);
}
