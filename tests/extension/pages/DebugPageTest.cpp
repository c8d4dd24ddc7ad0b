#include "../TestSupport.h"

#include "common/ModuleName.h"
#include "extension/NSP.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string logFile()
{
    return TestSupport::hostFolder() + "/iexplore_html.log";
}

struct Logged
{
    bool handled;
    std::string page;
    std::string console;
};

Logged run(const char* query, const char* method = "GET")
{
    Common::string buffer;
    NSP nsp(&buffer);
    testing::internal::CaptureStdout();
    bool handled = nsp.Execute(method, "debug.nsp", query);
    std::string console = testing::internal::GetCapturedStdout();
    return {handled, std::string(buffer.c_str(), buffer.size()), console};
}

// "[hh:mm:ss] " + message + CR LF, nothing else.
bool isLogLine(const std::string& line, const std::string& message)
{
    if (line.size() != 11 + message.size() + 2 || line[0] != '[' || line[3] != ':' ||
        line[6] != ':' || line[9] != ']' || line[10] != ' ')
        return false;
    for (int i : {1, 2, 4, 5, 7, 8})
        if (line[i] < '0' || line[i] > '9')
            return false;
    return line.compare(11, std::string::npos, message + "\r\n") == 0;
}
} // namespace

TEST(DebugPage, LogsToConsoleAndFile)
{
    EXPECT_EQ(std::string(Common::moduleName().c_str()), TestSupport::hostFolder() + "/iexplore");
    // The host folder is the process's own: a log there was written by an
    // earlier test of this process (when the tests run in one process).
    const bool firstUse = !TestSupport::exists(logFile());
    const std::string before = firstUse ? std::string() : TestSupport::readFile(logFile());
    if (firstUse)
        TestSupport::writeFile(logFile(), "from an earlier run\n");
    Logged r = run("Command=log&Message=a+b");
    EXPECT_TRUE(r.handled);
    EXPECT_EQ(r.page, "");
    EXPECT_TRUE(isLogLine(r.console, "a b")) << r.console;
    // The log is truncated on first use, then appended to.
    EXPECT_EQ(TestSupport::readFile(logFile()), before + r.console);
    Logged second = run("Command=LOG&Message=second");
    EXPECT_EQ(TestSupport::readFile(logFile()), before + r.console + second.console);
}

TEST(DebugPage, PercentStaysPercentAndAMissingMessageLogsAnEmptyLine)
{
    Logged r = run("Command=Log&Message=100%25%20%25s%25n%25%25");
    EXPECT_TRUE(isLogLine(r.console, "100% %s%n%%")) << r.console;
    EXPECT_NE(TestSupport::readFile(logFile()).find("] 100% %s%n%%\r\n"), std::string::npos);
    r = run("Command=Log");
    EXPECT_TRUE(isLogLine(r.console, "")) << r.console;
}

TEST(DebugPage, WithoutLogNothingIsWritten)
{
    const std::string before = TestSupport::readFile(logFile());
    for (const char* query : {"", "Message=x", "Command=Logx&Message=x", "Command=Lo&Message=x"})
    {
        Logged r = run(query);
        EXPECT_TRUE(r.handled);
        EXPECT_EQ(r.page, "");
        EXPECT_EQ(r.console, "") << query;
    }
    Logged post = run("Command=Log&Message=x", "POST"); // POST has no parameters
    EXPECT_EQ(post.console, "");
    EXPECT_EQ(TestSupport::readFile(logFile()), before);
}

TEST(DebugPage, ThroughTheEntryPoint)
{
    testing::internal::CaptureStdout();
    TestSupport::Answer a =
        TestSupport::get("zrmedia://Tidewell/debug.nsp?Command=Log&Message=hello+world#x");
    std::string console = testing::internal::GetCapturedStdout();
    EXPECT_EQ(a.result, 0);
    EXPECT_EQ(a.page, "");
    EXPECT_TRUE(isLogLine(console, "hello world")) << console;
}
