#include "common/filesystem/Application.h"

#include "ScopedEnvironment.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = Common::Filesystem;
using Common::string;

namespace
{
std::string text(string const& s)
{
    return std::string(s.c_str(), s.size());
}

fs::Application ran(char const* executable, char const* arguments)
{
    fs::Application application;
    application.Executable(executable);
    application.Arguments(arguments);
    EXPECT_TRUE(application.Execute());
    return application;
}

// The clean-up that the system page applies before putting a program's
// output into its JSON answer.
string cleanedForPage(string const& output)
{
    string cleaned = Common::Replace(output, "\\", "\\\\");
    cleaned = Common::Replace(cleaned, "\r", "");
    cleaned = Common::Replace(cleaned, "\"", "");
    return Common::Replace(cleaned, "\n", "\\n");
}

// Points this process's standard input at /dev/null for a scope, so that a
// program that would read it ends at once instead of waiting on a terminal.
class NullStandardInput
{
public:
    NullStandardInput() : m_saved(::dup(0))
    {
        int null = ::open("/dev/null", O_RDONLY);
        ::dup2(null, 0);
        ::close(null);
    }
    ~NullStandardInput()
    {
        ::dup2(m_saved, 0);
        ::close(m_saved);
    }

private:
    int m_saved;
};
} // namespace

TEST(Application, CapturesOutputErrorAndStatus)
{
    fs::Application fresh;
    EXPECT_EQ(0, fresh.returnCode());
    EXPECT_TRUE(fresh.output().empty());
    EXPECT_TRUE(fresh.error().empty());

    fs::Application both = ran("/bin/sh", "-c 'echo out; echo err 1>&2'");
    EXPECT_EQ(0, both.returnCode());
    EXPECT_EQ("out\n", text(both.output()));
    EXPECT_EQ("err\n", text(both.error()));

    // The status word of system(), not the exit code itself.
    fs::Application failing = ran("/bin/sh", "-c 'echo partial; exit 3'");
    ASSERT_TRUE(WIFEXITED(failing.returnCode()));
    EXPECT_EQ(3, WEXITSTATUS(failing.returnCode()));
    EXPECT_EQ(3 << 8, failing.returnCode());
    EXPECT_EQ("partial\n", text(failing.output()));

    // A program that cannot be started: the shell's status and complaint.
    fs::Application missing = ran("/no/such/program", "");
    EXPECT_EQ(127, WEXITSTATUS(missing.returnCode()));
    EXPECT_TRUE(missing.output().empty());
    EXPECT_NE(string::npos, missing.error().find("/no/such/program"));

    // Each run starts from empty results.
    fs::Application again;
    again.Executable("/bin/sh");
    again.Arguments("-c 'echo first; exit 1'");
    again.Execute();
    again.Arguments("-c true");
    again.Execute();
    EXPECT_EQ(0, again.returnCode());
    EXPECT_TRUE(again.output().empty());
}

TEST(Application, QuotesTheExecutableOnce)
{
    ScratchFolder scratch;
    scratch.write("my tool", "#!/bin/sh\necho \"tool says $1\"\n");
    std::filesystem::permissions(scratch.path("my tool"), std::filesystem::perms::owner_all);

    // The name has a space: only the added pair of quotes keeps it whole.
    std::string bare = scratch.path("my tool");
    std::string quoted = "\"" + bare + "\"";
    std::string oddlyQuoted = "\"" + scratch.path("my \"tool") + "\"\"";
    for (std::string const& executable : {bare, quoted, oddlyQuoted})
    {
        fs::Application application = ran(executable.c_str(), "hello");
        EXPECT_EQ(0, application.returnCode()) << executable;
        EXPECT_EQ("tool says hello\n", text(application.output())) << executable;
    }
}

TEST(Application, DoesNotPassTheStandardInputText)
{
    NullStandardInput nullInput;
    fs::Application application;
    application.Executable("/bin/cat");
    application.Input("secret text\n");
    application.Execute();
    EXPECT_EQ(0, application.returnCode());
    EXPECT_TRUE(application.output().empty());
}

TEST(Application, OutputCleanedAsThePageDoes)
{
    fs::Application quoted = ran("/usr/bin/printf", "'a\"b'");
    EXPECT_EQ("a\"b", text(quoted.output()));
    EXPECT_EQ("ab", text(cleanedForPage(quoted.output())));

    fs::Application lines = ran("/usr/bin/printf", "'first\\nsecond\\n'");
    EXPECT_EQ("first\\nsecond\\n", text(cleanedForPage(lines.output())));

    fs::Application mixed = ran("/bin/sh", "-c \"printf 'C:\\\\\\\\dir\\r\\nnext' 1>&2\"");
    EXPECT_EQ("C:\\dir\r\nnext", text(mixed.error()));
    EXPECT_EQ("C:\\\\dir\\nnext", text(cleanedForPage(mixed.error())));
}

TEST(Application, LeavesNoTemporaryFilesBehind)
{
    ScratchFolder scratch;
    ScopedEnvironment captureHere("TMPDIR", scratch.path().c_str());
    fs::Application application = ran("/bin/sh", "-c 'echo out; echo err 1>&2'");
    EXPECT_EQ("out\n", text(application.output()));
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
}
