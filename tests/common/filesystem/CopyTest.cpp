#include "common/filesystem/Copy.h"
#include "common/Thread.h"
#include "common/filesystem/CopyRegistry.h"
#include "common/filesystem/Wildcard.h"

#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <sys/stat.h>
#include <thread>

namespace fs = Common::Filesystem;
namespace stdfs = std::filesystem;

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

TEST(Copy, CopiesAFileToANewNameOrIntoAFolderFollowsLinksNeverLoopsAndRefusesTheImpossible)
{
    ScratchFolder scratch;
    std::string bytes("binary\0data\r\n", 13);
    scratch.write("data/tool.sh", bytes);
    stdfs::permissions(scratch.path("data/tool.sh"), stdfs::perms::owner_all);
    scratch.write("old.txt", "a longer text, replaced");
    scratch.makeFolder("tree/sub");
    scratch.makeFolder("existing");
    stdfs::create_symlink(scratch.path("data"), scratch.path("tree/data"));
    stdfs::create_symlink(scratch.path("tree"), scratch.path("tree/loop"));
    EXPECT_FALSE(fs::copy(scratch.at("missing"), scratch.at("target")));
    EXPECT_FALSE(fs::copy(scratch.at("tree/*.none"), scratch.at("target")));
    EXPECT_FALSE(fs::copy(scratch.at("tree/.."), scratch.at("existing"))); // no name to use
    EXPECT_FALSE(scratch.exists("target"));
    EXPECT_TRUE(stdfs::is_empty(scratch.path("existing")));
    // Never onto itself, which would empty the source.
    EXPECT_FALSE(fs::copy(scratch.at("data/tool.sh"), scratch.at("data")));

    EXPECT_TRUE(fs::copy(scratch.at("data/tool.sh"), scratch.at("existing")));
    EXPECT_EQ(stdfs::perms::owner_all,
              stdfs::status(scratch.path("existing/tool.sh")).permissions());
    EXPECT_TRUE(fs::copy(scratch.at("data/tool.sh"), scratch.at("old.txt")));
    // Missing parents of a new name are made; backslashes are separators.
    EXPECT_TRUE(fs::copy(scratch.at("data") + "\\tool.sh", scratch.at("new\\deep/copy.sh")));
    for (char const* copy : {"existing/tool.sh", "old.txt", "new/deep/copy.sh", "data/tool.sh"})
        EXPECT_EQ(bytes, scratch.read(copy)) << copy;

    EXPECT_TRUE(fs::copy(scratch.at("tree"), scratch.at("copy")));
    EXPECT_EQ(bytes, scratch.read("copy/data/tool.sh"));
    EXPECT_FALSE(stdfs::is_symlink(scratch.path("copy/data")));
    EXPECT_FALSE(scratch.exists("copy/loop")); // leads back into the walk
    // Into its own subfolder: the copy takes what was there when it began.
    EXPECT_TRUE(fs::copy(scratch.at("tree"), scratch.at("tree/sub")));
    EXPECT_EQ(bytes, scratch.read("tree/sub/tree/data/tool.sh"));
    EXPECT_TRUE(stdfs::is_empty(scratch.path("tree/sub/tree/sub")));

    // A dangling link or a FIFO (never read: that could wait forever) makes
    // the copy incomplete.
    stdfs::create_symlink(scratch.path("gone"), scratch.path("tree/dangling"));
    ASSERT_EQ(0, ::mkfifo(scratch.path("tree/fifo").c_str(), 0600));
    EXPECT_FALSE(fs::copy(scratch.at("tree"), scratch.at("partial")));
    EXPECT_EQ(bytes, scratch.read("partial/data/tool.sh"));
    EXPECT_FALSE(scratch.exists("partial/fifo"));
}

namespace
{
using Status = fs::CopyThread::_COPY_STATUS;
unsigned const kManyFiles = 3000;
unsigned const kFileSize = 4096;

// Files a stopped copy left behind; each must be whole (copies stop between files).
unsigned wholeFilesIn(ScratchFolder const& scratch, std::string const& folder)
{
    unsigned count = 0;
    if (scratch.exists(folder))
        for (auto const& entry : stdfs::directory_iterator(scratch.path(folder)))
            count += entry.file_size() == kFileSize ? 1 : 1000000;
    return count;
}

} // namespace

// What a finished copy reports is the system page's tests' concern.
TEST(CopyThread, StopEndsTheCopyBetweenFilesAndTheRegistryRunsOneCopyPerKeyUntilDestroyed)
{
    // Many small files, so that a copy is caught midway; enough for hashed
    // folder indexes, whose offsets a 32-bit listing must still read.
    ScratchFolder scratch;
    for (unsigned index = 0; index < kManyFiles; ++index)
        scratch.write("many/f" + std::to_string(index), std::string(kFileSize, 'm'));
    fs::CopyThread copy(scratch.at("many"), scratch.at("copy"));
    {
        Common::Synchronization::Thread thread(copy);
        while (copy.isRunning() && copy.status().currentFile < 10)
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        copy.Stop();
    }
    EXPECT_FALSE(copy.isRunning());
    Status status = copy.status();
    EXPECT_EQ(kManyFiles, status.totalFiles); // the totals are planned first
    EXPECT_EQ(kManyFiles * kFileSize, status.totalBytes);
    EXPECT_LT(status.currentFile, status.totalFiles);
    EXPECT_EQ(status.currentFile, wholeFilesIn(scratch, "copy"));
    EXPECT_EQ(status.currentFile * kFileSize, status.currentByte);

    {
        fs::CopyRegistry registry;
        ASSERT_TRUE(registry.Start("a", scratch.at("many"), scratch.at("a")));
        ASSERT_TRUE(registry.Start("b", scratch.at("many"), scratch.at("b")));
        EXPECT_FALSE(registry.Start("a", scratch.at("many"), scratch.at("other")));
        bool running;
        EXPECT_FALSE(registry.progress("A", status, running)); // keys keep their case
    }
    EXPECT_FALSE(scratch.exists("other"));
    unsigned copied = wholeFilesIn(scratch, "a") + wholeFilesIn(scratch, "b");
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(copied, wholeFilesIn(scratch, "a") + wholeFilesIn(scratch, "b")); // ended
    EXPECT_LT(copied, 2 * kManyFiles);
}
