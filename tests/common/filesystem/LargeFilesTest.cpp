// Files past 4 GiB and folders whose entries carry 64-bit inode numbers or
// directory offsets, as a 32-bit process meets them on current file systems.
#include "common/filesystem/Copy.h"
#include "common/filesystem/Filesystem.h"

#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = Common::Filesystem;

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

// A sparse file of 5 GiB with a few bytes at its start and past 4 GiB.
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
    EXPECT_EQ(std::multiset<std::string>{"disk.img"}, asSet(fs::getFileList(scratch.at("big"))));

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

// Enough entries for hashed folder indexes (ext4 and others), whose
// directory offsets do not fit 32 bits.
TEST(LargeFiles, FolderOfThousandsOfEntriesListsEveryOne)
{
    ScratchFolder scratch;
    for (int i = 0; i < 3000; ++i)
        ::close(
            ::open(scratch.path("entry-" + std::to_string(i)).c_str(), O_WRONLY | O_CREAT, 0644));
    scratch.makeFolder("sub");
    EXPECT_EQ(3000u, fs::getFileList(scratch.at()).size());
    EXPECT_EQ(1u, fs::getDirectoryList(scratch.at()).size());
}
