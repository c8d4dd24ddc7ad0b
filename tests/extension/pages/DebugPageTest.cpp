#include "../TestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

namespace
{
const std::string& logFile()
{
    static const std::string path = TestSupport::hostFolder() + "/iexplore_html.log";
    return path;
}

// What the page printed on the console, after checking its empty answer.
std::string logged(const std::string& url)
{
    testing::internal::CaptureStdout();
    TestSupport::Answer a = TestSupport::get(url);
    EXPECT_EQ(a.result, 0) << url;
    EXPECT_EQ(a.page, "") << url;
    return testing::internal::GetCapturedStdout();
}

// "[hh:mm:ss] " + message + CR LF, nothing else.
bool isLogLine(const std::string& line, const std::string& message)
{
    return std::regex_match(line.substr(0, 11), std::regex("\\[\\d\\d:\\d\\d:\\d\\d\\] ")) &&
           line.compare(11, std::string::npos, message + "\r\n") == 0;
}
} // namespace

// The log beside the host is truncated on the page's first use in a
// process, then appended to; a message is never taken as a format.
TEST(DebugPage, LogsToConsoleAndFile)
{
    const bool firstUse = !std::filesystem::exists(logFile());
    const std::string before = firstUse ? std::string() : TestSupport::readFile(logFile());
    if (firstUse)
        TestSupport::writeFile(logFile(), "from an earlier run\n");
    const std::string first = logged("zrmedia://Tidewell/debug.nsp?Command=log&Message=a+b#x");
    EXPECT_TRUE(isLogLine(first, "a b")) << first;
    const std::string second = logged("debug.nsp?Command=LOG&Message=100%25%20%25s%25n%25%25");
    EXPECT_TRUE(isLogLine(second, "100% %s%n%%")) << second;
    const std::string empty = logged("debug.nsp?Command=Log");
    EXPECT_TRUE(isLogLine(empty, "")) << empty;
    EXPECT_EQ(TestSupport::readFile(logFile()), before + first + second + empty);

    for (const char* query : {"", "Message=x", "Command=Logx&Message=x", "Command=Lo&Message=x"})
        EXPECT_EQ(logged(std::string("debug.nsp?") + query), "") << query;
    testing::internal::CaptureStdout();
    TestSupport::get("debug.nsp?Command=Log&Message=x", "POST"); // POST has no parameters
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(TestSupport::readFile(logFile()), before + first + second + empty);
}
