#include "../TestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using TestSupport::get;

namespace
{
std::string systemPage(const std::string& query)
{
    return get("zrmedia://Tidewell/system.nsp?" + query).page;
}

std::string returnCode(const char* code)
{
    return std::string("{\"ErrorCode\":0,\"ReturnCode\":\"") + code + "\"}";
}

// Polls the background copy under `key` until it reports that it has ended
// (at most 30 seconds); the last answer.
std::string progressAtTheEnd(const std::string& key)
{
    std::string last;
    for (int i = 0; i < 3000; ++i)
    {
        last = systemPage("Command=CopyThreadProgress&Key=" + key);
        if (last.find("\"ReturnCode\":\"0\"") != std::string::npos)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return last;
}

// Runs `work` with the process's standard input reading from /dev/null.
template <class Work> std::string withoutInput(Work work)
{
    int saved = dup(0);
    int null = open("/dev/null", O_RDONLY);
    dup2(null, 0);
    close(null);
    std::string answer = work();
    dup2(saved, 0);
    close(saved);
    return answer;
}
} // namespace

TEST(SystemPage, QueryAndUnknownCommands)
{
    EXPECT_EQ("{\"ErrorCode\":0,\"Platform\":\"Linux\"}", systemPage("Command=query"));
    EXPECT_EQ("", systemPage("Command=Format"));
    EXPECT_EQ("", systemPage(""));
}

TEST(SystemPage, FoldersFilesAndCopies)
{
    TestSupport::TempDir dir;
    const std::string folder = dir.file("a/b");
    EXPECT_EQ(returnCode("1"), systemPage("Command=CreateDirectory&DirectoryName=" + folder));
    EXPECT_EQ(returnCode("1"), systemPage("Command=DirectoryExists&Target=" + folder));
    EXPECT_EQ(returnCode("0"), systemPage("Command=FileExists&Target=" + dir.file("a/b/c.txt")));

    EXPECT_EQ(returnCode("1"),
              systemPage("Command=CreateFile&Filename=" + folder + "/c.txt&Contents=hello+world"));
    EXPECT_EQ(returnCode("1"), systemPage("Command=FileExists&Target=" + folder + "/c.txt"));
    EXPECT_EQ("hello world", systemPage("Command=ReadFile&Filename=" + folder + "/c.txt"));
    EXPECT_EQ(returnCode("0"),
              systemPage("Command=CreateFile&Filename=" + dir.file("none/x") + "&Contents=x"));

    EXPECT_EQ(returnCode("1"),
              systemPage("Command=Copy&Source=" + folder + "&Destination=" + dir.file("copy")));
    EXPECT_EQ("hello world", TestSupport::readFile(dir.file("copy/c.txt")));
    EXPECT_EQ(returnCode("0"), systemPage("Command=Copy&Source=" + dir.file("none") +
                                          "&Destination=" + dir.file("x")));

    // A FIFO is not read: the page answers at once, empty.
    ASSERT_EQ(0, mkfifo(dir.file("fifo").c_str(), 0600));
    EXPECT_EQ("", systemPage("Command=ReadFile&Filename=" + dir.file("fifo")));
    EXPECT_EQ("", systemPage("Command=ReadFile&Filename=" + dir.file("missing")));
}

TEST(SystemPage, RunCapturesCleanedOutput)
{
    // Quotes dropped, backslashes doubled, carriage returns dropped, line
    // feeds written as backslash-n; a quoted executable runs the same program.
    std::string printed = withoutInput(
        []
        {
            return systemPage(
                "Command=Run&Executable=%22printf%22&Arguments=%27a%22b%5C%5Cc%5Cnd%5Cr%5Cn%27");
        });
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"0\",\"StandardOutput\":\"ab\\\\c\\nd\\n\","
              "\"StandardError\":\"\"}",
              printed);
    std::string failed = withoutInput(
        [] {
            return systemPage(
                "Command=Run&Executable=sh&Arguments=-c+%22echo+oops+%3E%262;exit+3%22");
        });
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"768\",\"StandardOutput\":\"\",\"StandardError\":"
              "\"oops\\n\"}",
              failed);

    // The text for standard input is not given to the program.
    EXPECT_EQ(
        "{\"ErrorCode\":0,\"ReturnCode\":\"0\",\"StandardOutput\":\"\",\"StandardError\":\"\"}",
        withoutInput([] { return systemPage("Command=Run&Executable=cat&StandardInput=secret"); }));

    // A program that cannot be started: the shell's status word and message.
    std::string missing =
        withoutInput([] { return systemPage("Command=Run&Executable=/no/such/program"); });
    EXPECT_EQ(0u, missing.find("{\"ErrorCode\":0,\"ReturnCode\":\"32512\",\"StandardOutput\":\"\","
                               "\"StandardError\":\""));
    EXPECT_NE(std::string::npos, missing.find("/no/such/program"));
}

TEST(SystemPage, BackgroundCopyIsPolledToItsEnd)
{
    TestSupport::TempDir dir;
    TestSupport::makeDirectories(dir.file("src/sub"));
    TestSupport::writeFile(dir.file("src/one.txt"), std::string(1000, '1'));
    TestSupport::writeFile(dir.file("src/sub/two.txt"), std::string(2345, '2'));
    const std::string start =
        "Command=CopyThread&Key=job&Source=" + dir.file("src") + "&Destination=" + dir.file("dst");
    EXPECT_EQ(returnCode("1"), systemPage(start));

    std::string last = progressAtTheEnd("job");
    EXPECT_EQ(
        0u, last.find(
                "{\"ErrorCode\":0,\"ReturnCode\":\"0\",\"TotalFiles\":\"2\",\"CurrentFile\":\"2\","
                "\"TotalBytes\":\"3345\",\"CurrentByte\":\"3345\",\"CurrentFilename\":\""))
        << last;
    EXPECT_EQ(std::string(2345, '2'), TestSupport::readFile(dir.file("dst/sub/two.txt")));

    // Reported once: the key is forgotten afterwards, and may be used again.
    EXPECT_EQ("{\"ErrorCode\":1}", systemPage("Command=CopyThreadProgress&Key=job"));
    EXPECT_EQ("{\"ErrorCode\":1}", systemPage("Command=CopyThreadProgress&Key=never"));
}

TEST(SystemPage, FilesPastFourGiBAreFoundCopiedAndCountedInTheBackground)
{
    TestSupport::TempDir dir;
    TestSupport::makeDirectories(dir.file("src"));
    const std::string big = dir.file("src/disk.img");
    ASSERT_EQ(0, ::close(::open(big.c_str(), O_WRONLY | O_CREAT, 0644)));
    ASSERT_EQ(0, ::truncate(big.c_str(), 5LL << 30)); // a 5 GiB hole
    EXPECT_EQ(returnCode("1"), systemPage("Command=FileExists&Target=" + big));

    EXPECT_EQ(returnCode("1"),
              systemPage("Command=Copy&Source=" + big + "&Destination=" + dir.file("copy.img")));
    struct stat copied;
    ASSERT_EQ(0, ::stat(dir.file("copy.img").c_str(), &copied));
    EXPECT_EQ(5LL << 30, static_cast<long long>(copied.st_size));
    ::unlink(dir.file("copy.img").c_str());

    EXPECT_EQ(returnCode("1"), systemPage("Command=CopyThread&Key=big&Source=" + dir.file("src") +
                                          "&Destination=" + dir.file("dst")));
    std::string last = progressAtTheEnd("big");
    EXPECT_EQ(0u, last.find("{\"ErrorCode\":0,\"ReturnCode\":\"0\",\"TotalFiles\":\"1\","
                            "\"CurrentFile\":\"1\",\"TotalBytes\":\"5368709120\","
                            "\"CurrentByte\":\"5368709120\",\"CurrentFilename\":\""))
        << last;
}
