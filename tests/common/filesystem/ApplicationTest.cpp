#include "common/filesystem/Application.h"
#include "common/filesystem/Filesystem.h"
#include "common/filesystem/TemporaryFile.h"

#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

namespace fs = Common::Filesystem;

// The status word, standard input and the output the system page makes of
// them are the system page's tests' concern.
TEST(Application, QuotesTheExecutableOnceCapturesBothOutputsAndLeavesNoFiles)
{
    ScratchFolder scratch;
    scratch.write("my tool", "#!/bin/sh\necho \"tool says $1\"; echo err >&2\n");
    std::filesystem::permissions(scratch.path("my tool"), std::filesystem::perms::owner_all);
    std::string bare = scratch.path("my tool"); // the space needs the added quotes
    char const* previous = std::getenv("TMPDIR");
    std::string restore = previous ? previous : "";
    ::setenv("TMPDIR", scratch.path().c_str(), 1); // capture files go here
    for (std::string const& executable : {bare, "\"" + bare + "\"", "\"\"" + bare + "\""})
    {
        fs::Application application;
        application.Executable(executable.c_str());
        application.Arguments("hi");
        EXPECT_TRUE(application.Execute());
        EXPECT_EQ("tool says hi\n", text(application.output())) << executable;
        EXPECT_EQ("err\n", text(application.error())) << executable;
    }
    previous ? ::setenv("TMPDIR", restore.c_str(), 1) : ::unsetenv("TMPDIR");
    EXPECT_EQ(std::multiset<std::string>{"my tool"}, asSet(fs::getFileList(scratch.at())));
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
