#include "../TestSupport.h"

#include <gtest/gtest.h>

#include <regex>
#include <string>

namespace
{
// What the page printed on the console, after checking its empty answer.
std::string logged(const std::string& url, const std::string& method = "GET")
{
    testing::internal::CaptureStdout();
    TestSupport::Answer a = TestSupport::get(url, method);
    EXPECT_EQ(a.result, 0) << url;
    EXPECT_EQ(a.page, "") << url;
    return testing::internal::GetCapturedStdout();
}
} // namespace

// The log beside the host is truncated on the page's first use in a
// process, then appended to; a message is never taken as a format.
TEST(DebugPage, LogsToConsoleAndFile)
{
    const std::string file = TestSupport::hostFolder() + "iexplore_html.log";
    const std::string before = TestSupport::readFile(file);
    if (before.empty()) // the page's first use in this process truncates the log
        TestSupport::writeFile(file, "from an earlier run\n");
    std::string lines = logged("zrmedia://Tidewell/debug.nsp?Command=log&Message=a+b#x");
    lines += logged("debug.nsp?Command=LOG&Message=100%25%20%25s%25n%25%25");
    lines += logged("debug.nsp?Command=Log");
    const std::string time = "\\[\\d\\d:\\d\\d:\\d\\d\\] ";
    EXPECT_TRUE(std::regex_match(
        lines, std::regex(time + "a b\r\n" + time + "100% %s%n%%\r\n" + time + "\r\n")))
        << lines;
    for (const char* query : {"", "Message=x", "Command=Logx&Message=x", "Command=Lo&Message=x"})
        EXPECT_EQ(logged(std::string("debug.nsp?") + query), "") << query;
    EXPECT_EQ(logged("debug.nsp?Command=Log&Message=x", "POST"), ""); // POST has no parameters
    EXPECT_EQ(TestSupport::readFile(file), before + lines);
}
