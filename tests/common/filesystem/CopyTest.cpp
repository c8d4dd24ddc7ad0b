#include "common/filesystem/Copy.h"
#include "common/filesystem/CopyPlan.h"

#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace fs = Common::Filesystem;
using Common::string;
namespace stdfs = std::filesystem;

TEST(Copy, CopiesAFileToANewNameOrIntoAFolder)
{
    ScratchFolder scratch;
    std::string bytes("binary\0data\r\n", 13);
    scratch.write("source/tool.sh", bytes);
    stdfs::permissions(scratch.path("source/tool.sh"), stdfs::perms::owner_all);
    scratch.makeFolder("existing");

    EXPECT_TRUE(fs::copy(scratch.at("source/tool.sh"), scratch.at("renamed.sh")));
    EXPECT_EQ(bytes, scratch.read("renamed.sh"));
    EXPECT_EQ(stdfs::perms::owner_all, stdfs::status(scratch.path("renamed.sh")).permissions());

    EXPECT_TRUE(fs::copy(scratch.at("source/tool.sh"), scratch.at("existing")));
    EXPECT_EQ(bytes, scratch.read("existing/tool.sh"));

    // Missing parents of a new name are made; backslashes are separators.
    EXPECT_TRUE(fs::copy(scratch.at("source") + "\\tool.sh", scratch.at("new\\deep/copy.sh")));
    EXPECT_EQ(bytes, scratch.read("new/deep/copy.sh"));

    // An existing file is replaced.
    scratch.write("old.txt", "a much longer text than the source");
    EXPECT_TRUE(fs::copy(scratch.at("source/tool.sh"), scratch.at("old.txt")));
    EXPECT_EQ(bytes, scratch.read("old.txt"));

    // Never onto itself, which would empty the source.
    EXPECT_FALSE(fs::copy(scratch.at("source/tool.sh"), scratch.at("source")));
    EXPECT_FALSE(fs::copy(scratch.at("source/tool.sh"), scratch.at("source/tool.sh")));
    EXPECT_EQ(bytes, scratch.read("source/tool.sh"));
}

TEST(Copy, CopiesAFolderTree)
{
    ScratchFolder scratch;
    scratch.write("tree/top.txt", "top");
    scratch.write("tree/sub/inner.txt", "inner");
    scratch.write("tree/sub/deeper/last.bin", std::string(200000, 'z'));
    scratch.makeFolder("tree/empty");
    scratch.write("into/already.txt", "kept");

    EXPECT_TRUE(fs::copy(scratch.at("tree/"), scratch.at("copy")));
    EXPECT_EQ("top", scratch.read("copy/top.txt"));
    EXPECT_EQ("inner", scratch.read("copy/sub/inner.txt"));
    EXPECT_EQ(std::string(200000, 'z'), scratch.read("copy/sub/deeper/last.bin"));
    EXPECT_TRUE(stdfs::is_directory(scratch.path("copy/empty")));

    // Into an existing folder under its own name, merged with what is there.
    EXPECT_TRUE(fs::copy(scratch.at("tree"), scratch.at("into")));
    EXPECT_EQ("inner", scratch.read("into/tree/sub/inner.txt"));
    EXPECT_TRUE(fs::copy(scratch.at("tree/sub"), scratch.at("into/tree")));
    EXPECT_EQ("inner", scratch.read("into/tree/sub/inner.txt"));
    EXPECT_EQ("kept", scratch.read("into/already.txt"));
}

TEST(Copy, CopiesTheMatchesOfAWildcard)
{
    ScratchFolder scratch;
    scratch.write("media/a.inf", "a");
    scratch.write("media/b.inf", "b");
    scratch.write("media/b.inf.bak", "no");
    scratch.write("media/readme.txt", "no");
    scratch.write("media/x.inf/inside", "folder too");

    EXPECT_TRUE(fs::copy(scratch.at("media/*.inf"), scratch.at("drivers")));
    EXPECT_EQ("a", scratch.read("drivers/a.inf"));
    EXPECT_EQ("b", scratch.read("drivers/b.inf"));
    EXPECT_EQ("folder too", scratch.read("drivers/x.inf/inside"));
    EXPECT_FALSE(scratch.exists("drivers/b.inf.bak"));
    EXPECT_FALSE(scratch.exists("drivers/readme.txt"));

    EXPECT_TRUE(fs::copy(scratch.at("media/read*"), scratch.at("drivers")));
    EXPECT_EQ("no", scratch.read("drivers/readme.txt"));

    EXPECT_FALSE(fs::copy(scratch.at("media/*.none"), scratch.at("nothing")));
    EXPECT_FALSE(scratch.exists("nothing"));
    EXPECT_FALSE(fs::copy(scratch.at("missing/*"), scratch.at("nothing")));
    EXPECT_FALSE(scratch.exists("nothing"));
}

TEST(Copy, RefusesWhatCannotBeCopied)
{
    ScratchFolder scratch;
    scratch.write("tree/file", "x");
    scratch.makeFolder("existing");

    EXPECT_FALSE(fs::copy(scratch.at("missing"), scratch.at("target")));
    EXPECT_FALSE(scratch.exists("target"));
    EXPECT_FALSE(fs::copy("", scratch.at("target")));
    EXPECT_FALSE(fs::copy(scratch.at("tree"), ""));
    // "." or ".." give no name to copy under into an existing folder.
    EXPECT_FALSE(fs::copy(scratch.at("tree/."), scratch.at("existing")));
    EXPECT_FALSE(fs::copy(scratch.at("tree/.."), scratch.at("existing")));
    EXPECT_TRUE(stdfs::is_empty(scratch.path("existing")));

    // What can be copied is, but a dangling link or a FIFO makes the copy
    // incomplete (a FIFO is never read: that could wait forever).
    stdfs::create_symlink(scratch.path("gone"), scratch.path("tree/dangling"));
    ASSERT_EQ(0, ::mkfifo(scratch.path("tree/fifo").c_str(), 0600));
    EXPECT_FALSE(fs::copy(scratch.at("tree"), scratch.at("partial")));
    EXPECT_EQ("x", scratch.read("partial/file"));
    EXPECT_FALSE(scratch.exists("partial/fifo"));
}

TEST(Copy, FollowsLinksButNeverLoops)
{
    ScratchFolder scratch;
    scratch.write("data/real.txt", "real");
    scratch.write("tree/file", "x");
    stdfs::create_symlink(scratch.path("data/real.txt"), scratch.path("tree/linked.txt"));
    stdfs::create_symlink(scratch.path("data"), scratch.path("tree/data"));
    stdfs::create_symlink(scratch.path("tree"), scratch.path("tree/loop"));

    EXPECT_TRUE(fs::copy(scratch.at("tree"), scratch.at("copy")));
    EXPECT_EQ("real", scratch.read("copy/linked.txt"));
    EXPECT_FALSE(stdfs::is_symlink(scratch.path("copy/linked.txt")));
    EXPECT_EQ("real", scratch.read("copy/data/real.txt"));
    EXPECT_FALSE(scratch.exists("copy/loop")); // back to a folder being walked

    // A folder copied into its own subfolder: the copy holds what was there
    // before it started, and ends.
    scratch.write("self/file", "x");
    scratch.makeFolder("self/sub");
    EXPECT_TRUE(fs::copy(scratch.at("self"), scratch.at("self/sub")));
    EXPECT_EQ("x", scratch.read("self/sub/self/file"));
    EXPECT_TRUE(stdfs::is_empty(scratch.path("self/sub/self/sub")));
}

TEST(CopyPlan, CountsFilesAndBytesBeforeCopying)
{
    ScratchFolder scratch;
    scratch.write("tree/a", std::string(10, 'a'));
    scratch.write("tree/sub/b", std::string(300, 'b'));
    scratch.makeFolder("tree/empty");

    fs::CopyPlan plan(scratch.at("tree"), scratch.at("copy"));
    EXPECT_TRUE(plan.complete());
    EXPECT_EQ(2u, plan.totalFiles());
    EXPECT_EQ(310u, plan.totalBytes());
    EXPECT_EQ(5u, plan.steps().size()); // three folders, two files
    EXPECT_FALSE(scratch.exists("copy"));
    EXPECT_TRUE(plan.Perform(nullptr));
    EXPECT_EQ(std::string(300, 'b'), scratch.read("copy/sub/b"));

    fs::CopyPlan missing(scratch.at("missing"), scratch.at("copy"));
    EXPECT_FALSE(missing.complete());
    EXPECT_EQ(0u, missing.totalFiles());
    EXPECT_FALSE(missing.Perform(nullptr));
}
