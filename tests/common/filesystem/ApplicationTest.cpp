#include "common/filesystem/Application.h"

#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = Common::Filesystem;
using Common::Replace;

namespace
{
fs::Application ran(std::string const& executable, char const* arguments)
{
    fs::Application application;
    application.Executable(executable.c_str());
    application.Arguments(arguments);
    EXPECT_TRUE(application.Execute());
    return application;
}

// The clean-up that the system page gives a program's output before putting
// it into its JSON answer.
std::string cleanedForPage(Common::string const& output)
{
    Common::string cleaned = Replace(Replace(output, "\\", "\\\\"), "\r", "");
    return text(Replace(Replace(cleaned, "\"", ""), "\n", "\\n"));
}
} // namespace

TEST(Application, CapturesOutputErrorAndStatus)
{
    fs::Application both = ran("/bin/sh", "-c 'echo out; echo err 1>&2'");
    EXPECT_EQ(0, both.returnCode());
    EXPECT_EQ("out\n", text(both.output()));
    EXPECT_EQ("err\n", text(both.error()));

    fs::Application failing = ran("/bin/sh", "-c 'echo partial; exit 3'");
    EXPECT_EQ(3 << 8, failing.returnCode()); // the status word, not the exit code
    EXPECT_EQ("partial\n", text(failing.output()));

    // A program that cannot be started: the shell's status and complaint.
    fs::Application missing = ran("/no/such/program", "");
    EXPECT_EQ(127, WEXITSTATUS(missing.returnCode()));
    EXPECT_TRUE(missing.output().empty());
    EXPECT_NE(std::string::npos, text(missing.error()).find("/no/such/program"));
}

TEST(Application, QuotesTheExecutableOnceAndPassesNoInput)
{
    ScratchFolder scratch;
    scratch.write("my tool", "#!/bin/sh\necho \"tool says $1\"\n");
    std::filesystem::permissions(scratch.path("my tool"), std::filesystem::perms::owner_all);
    std::string bare = scratch.path("my tool"); // the space needs the added quotes
    for (std::string const& executable : {bare, "\"" + bare + "\"", "\"\"" + bare + "\""})
        EXPECT_EQ("tool says hi\n", text(ran(executable, "hi").output())) << executable;

    // The input text is not handed over: cat reads the caller's standard
    // input, pointed at /dev/null here so that it ends at once.
    int saved = ::dup(0);
    int null = ::open("/dev/null", O_RDONLY);
    ::dup2(null, 0);
    fs::Application cat;
    cat.Executable("/bin/cat");
    cat.Input("secret text\n");
    cat.Execute();
    ::dup2(saved, 0);
    ::close(null);
    ::close(saved);
    EXPECT_EQ(0, cat.returnCode());
    EXPECT_TRUE(cat.output().empty());
}

TEST(Application, OutputCleanedAsThePageDoesAndNoFilesLeft)
{
    ScratchFolder scratch;
    char const* previous = std::getenv("TMPDIR");
    std::string restore = previous ? previous : "";
    ::setenv("TMPDIR", scratch.path().c_str(), 1); // capture files go here
    fs::Application quoted = ran("/usr/bin/printf", "'a\"b'");
    fs::Application lines = ran("/usr/bin/printf", "'first\\nsecond\\n'");
    fs::Application mixed = ran("/bin/sh", "-c \"printf 'C:\\\\\\\\dir\\r\\nnext' 1>&2\"");
    previous ? ::setenv("TMPDIR", restore.c_str(), 1) : ::unsetenv("TMPDIR");

    EXPECT_EQ("a\"b", text(quoted.output()));
    EXPECT_EQ("ab", cleanedForPage(quoted.output()));
    EXPECT_EQ("first\\nsecond\\n", cleanedForPage(lines.output()));
    EXPECT_EQ("C:\\dir\r\nnext", text(mixed.error()));
    EXPECT_EQ("C:\\\\dir\\nnext", cleanedForPage(mixed.error()));
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
}
