#include "common/filesystem/Filesystem.h"
#include "common/filesystem/Copy.h"

#include "common/InputStreamFromFile.h"
#include "common/OutputStreamToFile.h"
#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = Common::Filesystem;
namespace stdfs = std::filesystem;
using Set = std::multiset<std::string>;

TEST(Filesystem, TellsKindsApartListsThemAndReadsAndWritesOnlyRegularFilesUpToTheLimit)
{
    ScratchFolder scratch;
    std::string bytes("one\0two\r\n", 9);
    scratch.write("file", bytes);
    scratch.makeFolder("folder");
    stdfs::create_symlink(scratch.path("folder"), scratch.path("to-folder"));
    stdfs::create_symlink(scratch.path("gone"), scratch.path("dangling"));
    ASSERT_EQ(0, ::mkfifo(scratch.path("fifo").c_str(), 0600));
    // A folder opens for reading too; a FIFO answers without waiting for a writer.
    for (char const* name : {"file", "folder", "fifo"})
        EXPECT_TRUE(fs::isFile(scratch.at(name))) << name;
    EXPECT_FALSE(fs::isFile(scratch.at("dangling")));
    EXPECT_TRUE(fs::isDirectory("") && fs::isDirectory(scratch.at("folder")));
    EXPECT_FALSE(fs::isDirectory(scratch.at("file")));
    EXPECT_TRUE(fs::isSymbolicLink(scratch.at("dangling")));
    EXPECT_FALSE(fs::isSymbolicLink(scratch.at("file")));

    EXPECT_EQ(Set{"file"}, asSet(fs::getFileList(scratch.at("/") + "/")));
    EXPECT_EQ((Set{"folder", "to-folder"}), asSet(fs::getDirectoryList(scratch.at())));
    EXPECT_TRUE(fs::getDirectoryList(scratch.at("folder")).empty()); // no "." or ".."
    EXPECT_TRUE(fs::getFileList(scratch.at("missing")).empty());

    unsigned const limit = Common::InputStreamFromFile::kMaxWholeFile;
    scratch.write("folder/at-limit", "");
    stdfs::resize_file(scratch.path("folder/at-limit"), limit);
    scratch.write("folder/past-limit", "");
    stdfs::resize_file(scratch.path("folder/past-limit"), limit + 1ull);
    Common::string read("unchanged");
    // A FIFO without a writer would wait; /dev/zero would never end.
    for (Common::string path : {scratch.at("missing"), scratch.at("fifo"), scratch.at(""),
                                Common::string("/dev/zero"), scratch.at("folder/past-limit")})
        EXPECT_FALSE(fs::getContents(path, read)) << path.c_str();
    EXPECT_EQ("unchanged", text(read));
    ASSERT_TRUE(fs::getContents(scratch.at("file"), read));
    EXPECT_EQ(bytes, text(read));
    ASSERT_TRUE(fs::getContents(scratch.at("folder/at-limit"), read));
    EXPECT_EQ(limit, read.size());
    ASSERT_TRUE(fs::getContents("/proc/self/status", read)); // the kernel reports no size
    EXPECT_NE(std::string::npos, text(read).find("VmRSS"));
    EXPECT_EQ(9, fs::getFileSize(scratch.at("file")));
    EXPECT_EQ(0, fs::getFileSize(scratch.at("missing")));

    // Opening a FIFO for writing would wait for a reader.
    for (Common::string path : {scratch.at("fifo"), Common::string("/dev/null"), scratch.at(""),
                                scratch.at("no/such/folder")})
        EXPECT_FALSE(Common::OutputStreamToFile(path, true).isOpen()) << path.c_str();
    EXPECT_TRUE(Common::OutputStreamToFile(scratch.at("plain"), false).isOpen());
}

TEST(Filesystem, DeletesFilesAndEmptyFoldersAndMakesFoldersWithTheirParents)
{
    ScratchFolder scratch;
    for (char const* file : {"file", "win/file", "full/sub/inside", "plain"})
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
    // which takes it only when empty.
    EXPECT_FALSE(fs::remove(scratch.at("full")));
    EXPECT_TRUE(scratch.exists("full/sub/inside"));
    for (char const* gone : {"file", "win/file", "empty", "empty2"})
        EXPECT_FALSE(scratch.exists(gone)) << gone;

    EXPECT_TRUE(fs::createDirectory(scratch.at("a/b/c")));
    EXPECT_TRUE(fs::createDirectory(scratch.at("a/b/c"))); // already there
    EXPECT_TRUE(fs::createDirectory(scratch.at("win") + "\\deep\\\\er//"));
    EXPECT_TRUE(fs::createDirectory("/"));
    EXPECT_TRUE(stdfs::is_directory(scratch.path("a/b/c")) &&
                stdfs::is_directory(scratch.path("win/deep/er")));
    // A file stands where a parent folder should be: the call gives up
    // instead of retrying forever.
    EXPECT_FALSE(fs::createDirectory(scratch.at("plain/child/grandchild")));
    EXPECT_EQ("x", scratch.read("plain"));
}

// Files past 4 GiB, as a 32-bit process meets them on current file systems.
namespace
{
long long const kFiveGiB = 5LL << 30;
long long const kPastFourGiB = (4LL << 30) + 12345;

std::string bytesAt(std::string const& path, long long offset, unsigned length)
{
    std::string bytes(length, '\0');
    int fd = ::open(path.c_str(), O_RDONLY);
    ssize_t got = ::pread(fd, &bytes[0], length, offset);
    ::close(fd);
    return got == static_cast<ssize_t>(length) ? bytes : std::string();
}
} // namespace

TEST(LargeFiles, FilePastFourGiBIsSizedFoundListedAndCopiedWithItsHoles)
{
    ScratchFolder scratch;
    scratch.makeFolder("big");
    int fd = ::open(scratch.path("big/disk.img").c_str(), O_WRONLY | O_CREAT, 0644);
    ASSERT_EQ(0, ::ftruncate(fd, kFiveGiB));
    ASSERT_EQ(5, ::pwrite(fd, "start", 5, 0));
    ASSERT_EQ(4, ::pwrite(fd, "deep", 4, kPastFourGiB));
    ::close(fd);
    EXPECT_EQ(kFiveGiB, fs::getFileSize(scratch.at("big/disk.img")));
    EXPECT_TRUE(fs::isFile(scratch.at("big/disk.img")));
    EXPECT_EQ(Set{"disk.img"}, asSet(fs::getFileList(scratch.at("big"))));

    ASSERT_TRUE(fs::copy(scratch.at("big"), scratch.at("copy")));
    std::string const copy = scratch.path("copy/disk.img");
    EXPECT_EQ(kFiveGiB, fs::getFileSize(copy.c_str()));
    EXPECT_EQ("start", bytesAt(copy, 0, 5));
    EXPECT_EQ("deep", bytesAt(copy, kPastFourGiB, 4));
    EXPECT_EQ(std::string(4, '\0'), bytesAt(copy, kFiveGiB - 4, 4));
    struct stat status;
    ASSERT_EQ(0, ::stat(copy.c_str(), &status));
    EXPECT_LT(status.st_blocks * 512LL, 64LL << 20); // the holes stay holes
}
