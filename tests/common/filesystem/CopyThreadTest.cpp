#include "common/Thread.h"
#include "common/filesystem/CopyRegistry.h"

#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace fs = Common::Filesystem;
using Status = fs::CopyThread::_COPY_STATUS;

namespace
{
unsigned const kManyFiles = 3000;
unsigned const kFileSize = 4096;

// Many small files, so that a copy takes long enough to be caught midway.
void writeManyFiles(ScratchFolder const& scratch)
{
    for (unsigned index = 0; index < kManyFiles; ++index)
        scratch.write("many/f" + std::to_string(index), std::string(kFileSize, 'm'));
}

// Files a stopped copy left behind; each must be whole (copies stop between files).
unsigned wholeFilesIn(ScratchFolder const& scratch, std::string const& folder)
{
    unsigned count = 0;
    if (scratch.exists(folder))
        for (auto const& entry : std::filesystem::directory_iterator(scratch.path(folder)))
            count += entry.file_size() == kFileSize ? 1 : 1000000;
    return count;
}

Status pollToTheEnd(fs::CopyRegistry& registry, Common::string const& key)
{
    Status status;
    for (bool running = true; running;)
    {
        EXPECT_TRUE(registry.progress(key, status, running));
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return status;
}
} // namespace

TEST(CopyRegistry, RunsOneCopyPerKeyAndReportsItsEndOnce)
{
    ScratchFolder scratch;
    scratch.write("tree/a.txt", std::string(1000, 'a'));
    scratch.write("tree/sub/b.txt", std::string(70000, 'b'));
    fs::CopyRegistry registry;
    Status status;
    bool running;
    ASSERT_TRUE(registry.Start("job", scratch.at("tree"), scratch.at("copy")));
    EXPECT_FALSE(registry.Start("job", scratch.at("tree"), scratch.at("other")));
    ASSERT_TRUE(registry.Start("single", scratch.at("tree/a.txt"), scratch.at("one.txt")));
    EXPECT_FALSE(registry.progress("JOB", status, running)); // keys keep their case
    status = pollToTheEnd(registry, "job");
    EXPECT_EQ(2u, status.totalFiles);
    EXPECT_EQ(2u, status.currentFile);
    EXPECT_EQ(71000u, status.totalBytes);
    EXPECT_EQ(71000u, status.currentByte);
    EXPECT_EQ(0u, text(status.currentFilename).rfind(scratch.path("tree/"), 0));
    EXPECT_FALSE(scratch.exists("other"));
    EXPECT_FALSE(registry.progress("job", status, running)); // reported once
    EXPECT_EQ(scratch.at("tree/a.txt"), pollToTheEnd(registry, "single").currentFilename);
    ASSERT_TRUE(registry.Start("job", scratch.at("missing"), scratch.at("none"))); // key free
    EXPECT_EQ(0u, pollToTheEnd(registry, "job").totalFiles);
}

TEST(CopyThread, StopEndsTheCopyBetweenFilesAndDestroyingTheRegistryStopsEveryCopy)
{
    ScratchFolder scratch;
    writeManyFiles(scratch);
    fs::CopyThread copy(scratch.at("many"), scratch.at("copy"));
    {
        Common::Synchronization::Thread thread(copy);
        while (copy.isRunning() && copy.status().currentFile < 10)
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        copy.Stop();
    }
    EXPECT_FALSE(copy.isRunning());
    Status status = copy.status();
    EXPECT_LT(status.currentFile, status.totalFiles);
    EXPECT_EQ(status.currentFile, wholeFilesIn(scratch, "copy"));
    EXPECT_EQ(status.currentFile * kFileSize, status.currentByte);

    {
        fs::CopyRegistry registry;
        ASSERT_TRUE(registry.Start("a", scratch.at("many"), scratch.at("a")));
        ASSERT_TRUE(registry.Start("b", scratch.at("many"), scratch.at("b")));
    }
    unsigned copied = wholeFilesIn(scratch, "a") + wholeFilesIn(scratch, "b");
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(copied, wholeFilesIn(scratch, "a") + wholeFilesIn(scratch, "b")); // ended
    EXPECT_LT(copied, 2 * kManyFiles);
}
