// How the system page cleans a program's output is its own test's concern.
#include "common/filesystem/Application.h"
#include "common/filesystem/TemporaryFile.h"

#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

namespace fs = Common::Filesystem;

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
} // namespace

TEST(Application, CapturesOutputErrorAndTheStatusWordAndLeavesNoFiles)
{
    ScratchFolder scratch;
    char const* previous = std::getenv("TMPDIR");
    std::string restore = previous ? previous : "";
    ::setenv("TMPDIR", scratch.path().c_str(), 1); // capture files go here
    fs::Application both = ran("/bin/sh", "-c 'echo out; printf \"err\\r\\n\" 1>&2; exit 3'");
    fs::Application missing = ran("/no/such/program", "");
    previous ? ::setenv("TMPDIR", restore.c_str(), 1) : ::unsetenv("TMPDIR");

    EXPECT_EQ(3 << 8, both.returnCode()); // the status word, not the exit code
    EXPECT_EQ("out\n", text(both.output()));
    EXPECT_EQ("err\r\n", text(both.error()));
    EXPECT_EQ(127, WEXITSTATUS(missing.returnCode())); // the shell's status and complaint
    EXPECT_NE(std::string::npos, text(missing.error()).find("/no/such/program"));
    EXPECT_TRUE(std::filesystem::is_empty(scratch.path()));
}

TEST(Application, QuotesTheExecutableOnce)
{
    ScratchFolder scratch;
    scratch.write("my tool", "#!/bin/sh\necho \"tool says $1\"\n");
    std::filesystem::permissions(scratch.path("my tool"), std::filesystem::perms::owner_all);
    std::string bare = scratch.path("my tool"); // the space needs the added quotes
    for (std::string const& executable : {bare, "\"" + bare + "\"", "\"\"" + bare + "\""})
        EXPECT_EQ("tool says hi\n", text(ran(executable, "hi").output())) << executable;
}

TEST(TemporaryFile, NamesAFreshFileInTmpAndRemovesItWhenAsked)
{
    ::unsetenv("TMPDIR"); // the C library would prefer that folder
    std::string removed, kept;
    {
        fs::TemporaryFile goes("", true), stays("log", false);
        removed = text(goes.name());
        kept = text(stays.name());
        EXPECT_EQ(0u, removed.rfind("/tmp/file", 0)) << removed;
        EXPECT_EQ(std::string::npos, removed.find('.'));
        EXPECT_EQ(kept.size() - 4, kept.find(".log"));
        EXPECT_FALSE(std::filesystem::exists(removed)); // a name only
        std::ofstream(removed) << "x";
        std::ofstream(kept) << "x";
    }
    EXPECT_FALSE(std::filesystem::exists(removed));
    EXPECT_TRUE(std::filesystem::exists(kept));
    std::filesystem::remove(kept);
}
