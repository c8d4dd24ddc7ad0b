#include "../TestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace
{
std::string systemPage(const std::string& query)
{
    return TestSupport::get("zrmedia://Tidewell/system.nsp?" + query).page;
}

std::string returnCode(const char* code)
{
    return std::string("{\"ErrorCode\":0,\"ReturnCode\":\"") + code + "\"}";
}

// The last progress answer of the background copy under `key`, polled until
// it reports its end (at most 30 seconds).
std::string progressAtTheEnd(const std::string& key)
{
    std::string last;
    for (int i = 0; i < 3000 && last.find("\"ReturnCode\":\"0\"") == std::string::npos; ++i)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        last = systemPage("Command=CopyThreadProgress&Key=" + key);
    }
    return last;
}

// A program run by the page, with standard input reading from /dev/null.
std::string run(const std::string& query)
{
    int saved = dup(0);
    int null = open("/dev/null", O_RDONLY);
    dup2(null, 0);
    close(null);
    std::string answer = systemPage("Command=Run&" + query);
    dup2(saved, 0);
    close(saved);
    return answer;
}
} // namespace

TEST(SystemPage, FoldersFilesAndCopiesAndTheirEffects)
{
    TestSupport::TempDir dir;
    const std::string folder = dir.file("a/b");
    ASSERT_EQ(0, mkfifo(dir.file("fifo").c_str(), 0600));
    const std::pair<std::string, std::string> steps[] = {
        {"Command=query", "{\"ErrorCode\":0,\"Platform\":\"Linux\"}"},
        {"Command=Format", ""},
        {"", ""},
        {"Command=CreateDirectory&DirectoryName=" + folder, returnCode("1")},
        {"Command=DirectoryExists&Target=" + folder, returnCode("1")},
        {"Command=FileExists&Target=" + folder + "/c.txt", returnCode("0")},
        {"Command=CreateFile&Filename=" + folder + "/c.txt&Contents=hello+world", returnCode("1")},
        {"Command=FileExists&Target=" + folder + "/c.txt", returnCode("1")},
        {"Command=ReadFile&Filename=" + folder + "/c.txt", "hello world"},
        {"Command=CreateFile&Filename=" + dir.file("none/x") + "&Contents=x", returnCode("0")},
        {"Command=Copy&Source=" + folder + "&Destination=" + dir.file("copy"), returnCode("1")},
        {"Command=ReadFile&Filename=" + dir.file("copy/c.txt"), "hello world"},
        {"Command=Copy&Source=" + dir.file("none") + "&Destination=" + dir.file("x"),
         returnCode("0")},
        // Only regular files are read: a FIFO answers at once, empty.
        {"Command=ReadFile&Filename=" + dir.file("fifo"), ""},
        {"Command=ReadFile&Filename=" + dir.file("missing"), ""},
    };
    for (auto const& step : steps)
        EXPECT_EQ(step.second, systemPage(step.first)) << step.first;
    EXPECT_EQ("hello world", TestSupport::readFile(folder + "/c.txt"));
    EXPECT_FALSE(std::filesystem::exists(dir.file("x")));
}

TEST(SystemPage, RunCapturesCleanedOutput)
{
    // Quotes dropped, backslashes doubled, carriage returns dropped, line
    // feeds written as backslash-n; a quoted executable runs the same program.
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"0\",\"StandardOutput\":\"ab\\\\c\\nd\\n\","
              "\"StandardError\":\"\"}",
              run("Executable=%22printf%22&Arguments=%27a%22b%5C%5Cc%5Cnd%5Cr%5Cn%27"));
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"768\",\"StandardOutput\":\"\",\"StandardError\":"
              "\"oops\\n\"}",
              run("Executable=sh&Arguments=-c+%22echo+oops+%3E%262;exit+3%22"));
    // The text for standard input is not given to the program.
    EXPECT_EQ(
        "{\"ErrorCode\":0,\"ReturnCode\":\"0\",\"StandardOutput\":\"\",\"StandardError\":\"\"}",
        run("Executable=cat&StandardInput=secret"));
    // A program that cannot be started: the shell's status word and message.
    std::string missing = run("Executable=/no/such/program");
    EXPECT_EQ(0u, missing.find("{\"ErrorCode\":0,\"ReturnCode\":\"32512\",\"StandardOutput\":\"\","
                               "\"StandardError\":\""));
    EXPECT_NE(std::string::npos, missing.find("/no/such/program"));
}

// Sizes past 4 GiB are found, copied (keeping the hole) and counted; the
// background copy is reported once, then its key is forgotten.
TEST(SystemPage, BackgroundCopyOfFilesPastFourGiBIsPolledToItsEnd)
{
    TestSupport::TempDir dir;
    std::filesystem::create_directories(dir.file("src/sub"));
    TestSupport::writeFile(dir.file("src/sub/two.txt"), std::string(2345, '2'));
    const std::string big = dir.file("src/disk.img");
    ASSERT_EQ(0, ::close(::open(big.c_str(), O_WRONLY | O_CREAT, 0644)));
    ASSERT_EQ(0, ::truncate(big.c_str(), 5LL << 30));
    EXPECT_EQ(returnCode("1"), systemPage("Command=FileExists&Target=" + big));
    EXPECT_EQ(returnCode("1"),
              systemPage("Command=Copy&Source=" + big + "&Destination=" + dir.file("copy.img")));
    struct stat copied;
    ASSERT_EQ(0, ::stat(dir.file("copy.img").c_str(), &copied));
    EXPECT_EQ(5LL << 30, static_cast<long long>(copied.st_size));
    ::unlink(dir.file("copy.img").c_str());

    EXPECT_EQ(returnCode("1"), systemPage("Command=CopyThread&Key=job&Source=" + dir.file("src") +
                                          "&Destination=" + dir.file("dst")));
    std::string last = progressAtTheEnd("job");
    EXPECT_EQ(
        0u, last.find("{\"ErrorCode\":0,\"ReturnCode\":\"0\",\"TotalFiles\":\"2\",\"CurrentFile\":"
                      "\"2\",\"TotalBytes\":\"5368711465\",\"CurrentByte\":\"5368711465\","
                      "\"CurrentFilename\":\""))
        << last;
    EXPECT_EQ(std::string(2345, '2'), TestSupport::readFile(dir.file("dst/sub/two.txt")));
    EXPECT_EQ("{\"ErrorCode\":1}", systemPage("Command=CopyThreadProgress&Key=job"));
    EXPECT_EQ("{\"ErrorCode\":1}", systemPage("Command=CopyThreadProgress&Key=never"));
}
