#include "common/filesystem/Copy.h"
#include "common/filesystem/Wildcard.h"

#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace fs = Common::Filesystem;
namespace stdfs = std::filesystem;

TEST(Copy, CopiesAFileToANewNameOrIntoAFolder)
{
    ScratchFolder scratch;
    std::string bytes("binary\0data\r\n", 13);
    scratch.write("source/tool.sh", bytes);
    stdfs::permissions(scratch.path("source/tool.sh"), stdfs::perms::owner_all);
    scratch.makeFolder("existing");
    scratch.write("old.txt", "a longer text, replaced");

    EXPECT_TRUE(fs::copy(scratch.at("source/tool.sh"), scratch.at("existing")));
    EXPECT_EQ(stdfs::perms::owner_all,
              stdfs::status(scratch.path("existing/tool.sh")).permissions());
    EXPECT_TRUE(fs::copy(scratch.at("source/tool.sh"), scratch.at("old.txt")));
    // Missing parents of a new name are made; backslashes are separators.
    EXPECT_TRUE(fs::copy(scratch.at("source") + "\\tool.sh", scratch.at("new\\deep/copy.sh")));
    // Never onto itself, which would empty the source.
    EXPECT_FALSE(fs::copy(scratch.at("source/tool.sh"), scratch.at("source")));
    for (char const* copy : {"existing/tool.sh", "old.txt", "new/deep/copy.sh", "source/tool.sh"})
        EXPECT_EQ(bytes, scratch.read(copy)) << copy;
}

TEST(Copy, CopiesFolderTreesAndWhatAWildcardMatches)
{
    ScratchFolder scratch;
    std::string const big(200000, 'b');
    for (char const* file :
         {"tree/a.inf", "tree/a.inf.bak", "tree/x.inf.inf", "tree/qqazz", "tree/azz"})
        scratch.write(file, file);
    scratch.write("tree/sub/deeper/b.inf", big);
    scratch.makeFolder("tree/empty");
    scratch.write("into/kept", "kept");

    EXPECT_TRUE(fs::copy(scratch.at("tree/"), scratch.at("copy")));
    EXPECT_EQ(big, scratch.read("copy/sub/deeper/b.inf"));
    EXPECT_TRUE(stdfs::is_directory(scratch.path("copy/empty")));
    EXPECT_TRUE(fs::copy(scratch.at("tree"), scratch.at("into"))); // merged under its name
    EXPECT_EQ("tree/a.inf", scratch.read("into/tree/a.inf"));
    EXPECT_EQ("kept", scratch.read("into/kept"));

    // Matches go into the folder, made if missing. Matching is lenient on
    // purpose (see _isMatch): only the first ".inf" counts, and a middle text
    // is looked for from the lengths of the texts before it.
    EXPECT_TRUE(fs::copy(scratch.at("tree/*.inf"), scratch.at("drivers")));
    EXPECT_TRUE(fs::copy(scratch.at("tree/s*"), scratch.at("drivers")));
    EXPECT_TRUE(fs::copy(scratch.at("tree/*zz*a*"), scratch.at("drivers")));
    EXPECT_EQ(big, scratch.read("drivers/sub/deeper/b.inf"));
    for (char const* name : {"a.inf", "qqazz"})
        EXPECT_TRUE(scratch.exists(std::string("drivers/") + name)) << name;
    for (char const* name : {"a.inf.bak", "x.inf.inf", "azz", "empty"})
        EXPECT_FALSE(scratch.exists(std::string("drivers/") + name)) << name;
    fs::_MATCH match;
    EXPECT_FALSE(fs::_isWild("*.txt", match));     // no "/"
    EXPECT_FALSE(fs::_isWild("/d*/x.txt", match)); // the star not in the last name
}

TEST(Copy, RefusesWhatCannotBeCopiedAndCopiesTheRest)
{
    ScratchFolder scratch;
    scratch.write("tree/file", "x");
    scratch.makeFolder("existing");
    EXPECT_FALSE(fs::copy(scratch.at("missing"), scratch.at("target")));
    EXPECT_FALSE(fs::copy(scratch.at("tree/*.none"), scratch.at("target")));
    EXPECT_FALSE(fs::copy(scratch.at("tree/.."), scratch.at("existing"))); // no name to use
    EXPECT_FALSE(scratch.exists("target"));
    EXPECT_TRUE(stdfs::is_empty(scratch.path("existing")));

    // A dangling link or a FIFO (never read: that could wait forever) makes
    // the copy incomplete.
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
    scratch.makeFolder("tree/sub");
    stdfs::create_symlink(scratch.path("data"), scratch.path("tree/data"));
    stdfs::create_symlink(scratch.path("tree"), scratch.path("tree/loop"));
    EXPECT_TRUE(fs::copy(scratch.at("tree"), scratch.at("copy")));
    EXPECT_EQ("real", scratch.read("copy/data/real.txt"));
    EXPECT_FALSE(stdfs::is_symlink(scratch.path("copy/data")));
    EXPECT_FALSE(scratch.exists("copy/loop")); // leads back into the walk

    // Into its own subfolder: the copy takes what was there when it began.
    EXPECT_TRUE(fs::copy(scratch.at("tree"), scratch.at("tree/sub")));
    EXPECT_EQ("real", scratch.read("tree/sub/tree/data/real.txt"));
    EXPECT_TRUE(stdfs::is_empty(scratch.path("tree/sub/tree/sub")));
}
