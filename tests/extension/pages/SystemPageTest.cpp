#include "../TestSupport.h"
#include "tests/support/SmallFileSystem.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fcntl.h>
#include <filesystem>
#include <functional>
#include <regex>
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

// The last answer of a background copy under `key`, polled (at most 30 s).
std::string copyInTheBackground(
    const std::string& key, const std::string& from, const std::string& to,
    std::function<void()> meanwhile = [] {})
{
    EXPECT_EQ(returnCode("1"), systemPage("Command=CopyThread&Key=" + key + "&Source=" + from +
                                          "&Destination=" + to));
    meanwhile();
    std::string last;
    for (int i = 0; i < 3000 && last.find("\"ReturnCode\":\"0\"") == std::string::npos &&
                    last != "{\"ErrorCode\":1}";
         ++i)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        last = systemPage("Command=CopyThreadProgress&Key=" + key);
    }
    // Reported once: the key is forgotten afterwards.
    EXPECT_EQ("{\"ErrorCode\":1}", systemPage("Command=CopyThreadProgress&Key=" + key));
    return last;
}
} // namespace

TEST(SystemPage, FoldersFilesAndCopiesAndTheirEffects)
{
    ScratchFolder dir;
    const std::string folder = dir.path("a/b");
    ASSERT_EQ(0, mkfifo(dir.path("fifo").c_str(), 0600));
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
        {"Command=CreateFile&Filename=" + dir.path("none/x") + "&Contents=x", returnCode("0")},
        {"Command=Copy&Source=" + folder + "&Destination=" + dir.path("copy"), returnCode("1")},
        {"Command=ReadFile&Filename=" + dir.path("copy/c.txt"), "hello world"},
        {"Command=Copy&Source=" + dir.path("none") + "&Destination=" + dir.path("x"),
         returnCode("0")},
        // Only regular files are read: a FIFO answers at once, empty.
        {"Command=ReadFile&Filename=" + dir.path("fifo"), ""},
        {"Command=ReadFile&Filename=" + dir.path("missing"), ""},
        {"Command=CopyThreadProgress&Key=never", "{\"ErrorCode\":1}"},
    };
    for (auto const& step : steps)
        EXPECT_EQ(step.second, systemPage(step.first)) << step.first;
    EXPECT_EQ("hello world", TestSupport::readFile(folder + "/c.txt"));
    EXPECT_FALSE(std::filesystem::exists(dir.path("x")));

    // A background copy of a tree with a file past 4 GiB, polled to its end.
    const std::string big = dir.path("a/disk.img");
    ASSERT_EQ(0, ::close(::open(big.c_str(), O_WRONLY | O_CREAT, 0644)));
    ASSERT_EQ(0, ::truncate(big.c_str(), 5LL << 30));
    const std::string last = copyInTheBackground("job", dir.path("a"), dir.path("dst"));
    EXPECT_EQ(0u, last.find("{\"ErrorCode\":0,\"ReturnCode\":\"0\",\"TotalFiles\":\"2\","
                            "\"CurrentFile\":\"2\",\"TotalBytes\":\"5368709131\","
                            "\"CurrentByte\":\"5368709131\",\"CurrentFilename\":\""))
        << last;
    EXPECT_EQ("hello world", TestSupport::readFile(dir.path("dst/b/c.txt")));
}

// The text for standard input is not given to the program; a program that
// cannot be started answers the shell's status word and message.
TEST(SystemPage, RunAnswersStatusAndCleanedOutput)
{
    int saved = dup(0);
    int null = open("/dev/null", O_RDONLY);
    dup2(null, 0);
    close(null);
    // Quotes dropped, backslashes doubled, carriage returns dropped, line
    // feeds written as backslash-n; a quoted executable runs the same program.
    const std::string printed =
        systemPage("Command=Run&Executable=%22printf%22&Arguments=%27a%22b%5C%5Cc%5Cnd%5Cr%5Cn%27");
    const std::string failed = systemPage("Command=Run&Executable=sh&Arguments=-c+%22cat;echo+"
                                          "oops+%3E%262;exit+3%22&StandardInput=secret");
    const std::string missing = systemPage("Command=Run&Executable=/no/such/program");
    dup2(saved, 0);
    close(saved);
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"0\",\"StandardOutput\":\"ab\\\\c\\nd\\n\","
              "\"StandardError\":\"\"}",
              printed);
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"768\",\"StandardOutput\":\"\",\"StandardError\":"
              "\"oops\\n\"}",
              failed);
    EXPECT_EQ(0u, missing.find("{\"ErrorCode\":0,\"ReturnCode\":\"32512\",\"StandardOutput\":\"\","
                               "\"StandardError\":\""));
    EXPECT_NE(std::string::npos, missing.find("/no/such/program"));
}

// A full disk under a copy is reported (no success, not every byte), and a
// background copy whose source disappears ends, leaving only whole files.
TEST(SystemPage, CopiesThatCannotFinishSaySo)
{
    ScratchFolder dir;
    for (int file = 0; file < 200; ++file)
    {
        const std::string folder = dir.path("src/d" + std::to_string(file % 10));
        std::filesystem::create_directories(folder);
        TestSupport::writeFile(folder + "/f" + std::to_string(file), std::string(20000, 'x'));
    }
    std::string end = copyInTheBackground("gone", dir.path("src"), dir.path("dst"),
                                          [&] { std::filesystem::remove_all(dir.path("src")); });
    EXPECT_EQ(0u, end.find("{\"ErrorCode\":0,\"ReturnCode\":\"0\"")) << end;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir.path("dst")))
        EXPECT_TRUE(!entry.is_regular_file() || entry.file_size() == 20000u) << entry.path();

    TestSupport::SmallFileSystem full("64k");
    if (!full.refusal().empty())
        GTEST_SKIP() << full.refusal();
    std::filesystem::create_directories(dir.path("tree"));
    TestSupport::writeFile(dir.path("tree/big.bin"), std::string(40000, 'b'));
    TestSupport::writeFile(dir.path("tree/small.txt"), std::string(100, 's'));
    full.fill(16384);
    EXPECT_EQ(returnCode("0"), systemPage("Command=Copy&Source=" + dir.path("tree/big.bin") +
                                          "&Destination=" + full.file("big.bin")));
    end = copyInTheBackground("full", dir.path("tree"), full.file("tree"));
    std::smatch bytes;
    const std::regex totals("^\\{\"ErrorCode\":0,\"ReturnCode\":\"0\".*\"TotalBytes\":\"([0-9]+)\","
                            "\"CurrentByte\":\"([0-9]+)\"");
    ASSERT_TRUE(std::regex_search(end, bytes, totals)) << end;
    EXPECT_NE(bytes[1], bytes[2]) << end;
}
