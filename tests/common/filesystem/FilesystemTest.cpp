#include "common/filesystem/Filesystem.h"

#include "common/InputStreamFromFile.h"
#include "common/OutputStreamToFile.h"

#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace fs = Common::Filesystem;
namespace stdfs = std::filesystem;
using Set = std::multiset<std::string>;

TEST(Filesystem, TellsFilesFoldersAndLinksApart)
{
    ScratchFolder scratch;
    scratch.write("file", "x");
    scratch.makeFolder("folder");
    stdfs::create_symlink(scratch.path("gone"), scratch.path("dangling"));
    ASSERT_EQ(0, ::mkfifo(scratch.path("fifo").c_str(), 0600));

    EXPECT_TRUE(fs::isFile(scratch.at("file")));
    EXPECT_TRUE(fs::isFile(scratch.at("folder"))); // a folder opens for reading too
    EXPECT_TRUE(fs::isFile(scratch.at("fifo")));   // answers without waiting for a writer
    EXPECT_FALSE(fs::isFile(scratch.at("dangling")));
    EXPECT_TRUE(fs::isDirectory(""));
    EXPECT_TRUE(fs::isDirectory(scratch.at("folder")));
    EXPECT_FALSE(fs::isDirectory(scratch.at("file")));
    EXPECT_TRUE(fs::isSymbolicLink(scratch.at("dangling")));
    EXPECT_FALSE(fs::isSymbolicLink(scratch.at("file")));
}

TEST(Filesystem, ReadsContentsAndSizes)
{
    ScratchFolder scratch;
    std::string bytes("one\0two\r\n", 9);
    scratch.write("file", bytes);
    ASSERT_EQ(0, ::mkfifo(scratch.path("fifo").c_str(), 0600));

    Common::string read;
    ASSERT_TRUE(fs::getContents(scratch.at("file"), read));
    EXPECT_EQ(bytes, text(read));
    EXPECT_FALSE(fs::getContents(scratch.at("missing"), read));
    EXPECT_FALSE(fs::getContents(scratch.at("fifo"), read)); // no writer: would wait
    EXPECT_FALSE(fs::getContents("/dev/zero", read));        // would never end
    // Files the kernel reports no size for are still read whole.
    ASSERT_TRUE(fs::getContents("/proc/self/status", read));
    EXPECT_NE(text(read).find("VmRSS"), std::string::npos);
    EXPECT_EQ(9, fs::getFileSize(scratch.at("file")));
    EXPECT_EQ(0, fs::getFileSize(scratch.at("missing")));
    // A sparse file beyond 4 GiB: the size needs all 64 bits.
    scratch.write("huge", "");
    stdfs::resize_file(scratch.path("huge"), 5LL << 30);
    EXPECT_EQ(5LL << 30, fs::getFileSize(scratch.at("huge")));
}

TEST(Filesystem, ReadsNoFileLongerThanTheLimit)
{
    ScratchFolder scratch;
    const unsigned limit = Common::InputStreamFromFile::kMaxWholeFile;
    scratch.write("at-limit", "");
    stdfs::resize_file(scratch.path("at-limit"), limit);
    scratch.write("past-limit", "");
    stdfs::resize_file(scratch.path("past-limit"), limit + 1ull);

    Common::string read("unchanged");
    EXPECT_FALSE(fs::getContents(scratch.at("past-limit"), read));
    EXPECT_EQ("unchanged", text(read));
    ASSERT_TRUE(fs::getContents(scratch.at("at-limit"), read));
    EXPECT_EQ(limit, read.size());
}

TEST(Filesystem, WritesNoFifoOrDevice)
{
    ScratchFolder scratch;
    ASSERT_EQ(0, ::mkfifo(scratch.path("fifo").c_str(), 0600));
    // Opening a FIFO for writing would wait for a reader.
    EXPECT_FALSE(Common::OutputStreamToFile(scratch.at("fifo"), false).isOpen());
    EXPECT_FALSE(Common::OutputStreamToFile("/dev/null", true).isOpen());
    EXPECT_FALSE(Common::OutputStreamToFile(scratch.at(""), false).isOpen());
    EXPECT_TRUE(Common::OutputStreamToFile(scratch.at("plain"), false).isOpen());
}

TEST(Filesystem, ListsFilesAndFoldersSeparately)
{
    ScratchFolder scratch;
    scratch.write("top/a.txt", "a");
    scratch.makeFolder("top/sub");
    stdfs::create_symlink(scratch.path("top/sub"), scratch.path("top/to-sub"));
    stdfs::create_symlink(scratch.path("nowhere"), scratch.path("top/dangling"));

    EXPECT_EQ(Set{"a.txt"}, asSet(fs::getFileList(scratch.at("//top//"))));
    EXPECT_EQ((Set{"sub", "to-sub"}), asSet(fs::getDirectoryList(scratch.at("top"))));
    EXPECT_TRUE(fs::getDirectoryList(scratch.at("top/sub")).empty()); // no "." or ".."
    EXPECT_TRUE(fs::getFileList(scratch.at("missing")).empty());
}

TEST(Filesystem, DeletesFilesAndEmptyFolders)
{
    ScratchFolder scratch;
    for (char const* file : {"file", "win/file", "full/sub/inside"})
        scratch.write(file, "x");
    scratch.makeFolder("empty");
    scratch.makeFolder("empty2");

    EXPECT_TRUE(fs::deleteFile(scratch.at("//file")));
    EXPECT_FALSE(fs::deleteFile(scratch.at("file")));
    EXPECT_TRUE(fs::deleteDirectory(scratch.at("empty")));
    EXPECT_FALSE(fs::deleteDirectory(scratch.at("full")));
    EXPECT_TRUE(fs::remove(scratch.at("win") + "\\\\file")); // backslashes are separators
    EXPECT_TRUE(fs::remove(scratch.at("empty2")));
    // A readable folder opens as a file, so remove hands it to deleteFile,
    // which takes it only when empty. (Emptying entry by entry happens only
    // for folders that do not open, which root, running the tests, cannot make.)
    EXPECT_FALSE(fs::remove(scratch.at("full")));
    EXPECT_TRUE(scratch.exists("full/sub/inside"));
    for (char const* gone : {"file", "win/file", "empty", "empty2"})
        EXPECT_FALSE(scratch.exists(gone)) << gone;
}

TEST(Filesystem, CreateDirectoryMakesMissingParentsOrGivesUp)
{
    ScratchFolder scratch;
    EXPECT_TRUE(fs::createDirectory(scratch.at("a/b/c")));
    EXPECT_TRUE(fs::createDirectory(scratch.at("a/b/c"))); // already there
    EXPECT_TRUE(fs::createDirectory(scratch.at("win") + "\\deep\\\\er//"));
    EXPECT_TRUE(fs::createDirectory("/"));
    EXPECT_TRUE(stdfs::is_directory(scratch.path("a/b/c")));
    EXPECT_TRUE(stdfs::is_directory(scratch.path("win/deep/er")));

    stdfs::path previous = stdfs::current_path();
    stdfs::current_path(scratch.path());
    EXPECT_TRUE(fs::createDirectory("x/y")); // relative to the working folder
    stdfs::current_path(previous);
    EXPECT_TRUE(stdfs::is_directory(scratch.path("x/y")));

    // A regular file stands where a parent folder should be (permission bits
    // would do as well, but root, running the tests, may write anywhere): the
    // call gives up instead of retrying forever.
    scratch.write("plain", "x");
    EXPECT_FALSE(fs::createDirectory(scratch.at("plain/child/grandchild")));
    EXPECT_EQ("x", scratch.read("plain"));
}
