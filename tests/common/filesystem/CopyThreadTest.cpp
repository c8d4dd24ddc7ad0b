#include "common/filesystem/CopyThread.h"
#include "common/Thread.h"
#include "common/filesystem/CopyRegistry.h"

#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <thread>

namespace fs = Common::Filesystem;
using Common::string;
using Status = fs::CopyThread::_COPY_STATUS;

namespace
{
const unsigned kManyFiles = 3000;
const unsigned kFileSize = 4096;

// A folder of many small files, so that a copy takes long enough to be
// caught in the middle.
void writeManyFiles(ScratchFolder const& scratch, std::string const& folder)
{
    for (unsigned index = 0; index < kManyFiles; ++index)
    {
        char name[32];
        std::snprintf(name, sizeof name, "/f%04u", index);
        scratch.write(folder + name, std::string(kFileSize, 'm'));
    }
}

// Every file that a stopped copy left behind is whole: copies end between
// files. Returns how many there are.
unsigned wholeFilesIn(std::string const& folder)
{
    unsigned count = 0;
    for (auto const& entry : std::filesystem::directory_iterator(folder))
    {
        EXPECT_EQ(kFileSize, entry.file_size()) << entry.path();
        ++count;
    }
    return count;
}

// Polls until the copy has ended; returns the final report.
Status pollToTheEnd(fs::CopyRegistry& registry, string const& key)
{
    Status status;
    bool running = true;
    while (running)
    {
        EXPECT_TRUE(registry.progress(key, status, running));
        if (running)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return status;
}
} // namespace

TEST(CopyRegistry, ReportsTotalsAndTheFinalCountsOnce)
{
    ScratchFolder scratch;
    scratch.write("tree/a.txt", std::string(1000, 'a'));
    scratch.write("tree/sub/b.txt", std::string(70000, 'b'));
    scratch.write("tree/sub/c.txt", "");
    fs::CopyRegistry registry;

    Status status;
    bool running = true;
    EXPECT_FALSE(registry.progress("job", status, running));

    ASSERT_TRUE(registry.Start("job", scratch.at("tree"), scratch.at("copy")));
    EXPECT_FALSE(registry.Start("job", scratch.at("other"), scratch.at("other-copy")));
    EXPECT_FALSE(registry.progress("JOB", status, running)); // keys keep their case

    status = pollToTheEnd(registry, "job");
    EXPECT_EQ(3u, status.totalFiles);
    EXPECT_EQ(3u, status.currentFile);
    EXPECT_EQ(71000u, status.totalBytes);
    EXPECT_EQ(71000u, status.currentByte);
    EXPECT_EQ(0u, std::string(status.currentFilename.c_str()).rfind(scratch.path("tree/"), 0))
        << status.currentFilename.c_str();
    EXPECT_EQ(std::string(70000, 'b'), scratch.read("copy/sub/b.txt"));
    EXPECT_FALSE(scratch.exists("other-copy"));

    // Reported once: the key is gone, and may be used again.
    EXPECT_FALSE(registry.progress("job", status, running));
    ASSERT_TRUE(registry.Start("job", scratch.at("tree/a.txt"), scratch.at("again.txt")));
    status = pollToTheEnd(registry, "job");
    EXPECT_EQ(1u, status.currentFile);
    EXPECT_EQ(string(scratch.at("tree/a.txt")), status.currentFilename);
    EXPECT_EQ(std::string(1000, 'a'), scratch.read("again.txt"));

    // A copy that finds nothing to copy ends too, with nothing counted.
    ASSERT_TRUE(registry.Start("missing", scratch.at("missing"), scratch.at("nowhere")));
    status = pollToTheEnd(registry, "missing");
    EXPECT_EQ(0u, status.totalFiles);
    EXPECT_EQ(0u, status.currentFile);
    EXPECT_TRUE(status.currentFilename.empty());
}

TEST(CopyRegistry, KeepsSeveralCopiesApart)
{
    ScratchFolder scratch;
    scratch.write("one/file", "1");
    scratch.write("two/x", "22");
    scratch.write("two/y", "22");
    fs::CopyRegistry registry;
    ASSERT_TRUE(registry.Start("first", scratch.at("one"), scratch.at("copy-one")));
    ASSERT_TRUE(registry.Start("second", scratch.at("two/*"), scratch.at("copy-two")));

    Status second = pollToTheEnd(registry, "second");
    Status first = pollToTheEnd(registry, "first");
    EXPECT_EQ(1u, first.totalFiles);
    EXPECT_EQ(1u, first.totalBytes);
    EXPECT_EQ(2u, second.totalFiles);
    EXPECT_EQ(4u, second.currentByte);
    EXPECT_EQ("22", scratch.read("copy-two/y"));
}

TEST(CopyThread, StopEndsTheCopyBetweenFiles)
{
    ScratchFolder scratch;
    writeManyFiles(scratch, "many");

    // Stopped before it runs: counted, but nothing copied.
    fs::CopyThread early(scratch.at("many"), scratch.at("early"));
    EXPECT_TRUE(early.isRunning());
    early.Stop();
    early.Run();
    EXPECT_FALSE(early.isRunning());
    Status status = early.status();
    EXPECT_EQ(kManyFiles, status.totalFiles);
    EXPECT_EQ(0u, status.currentFile);
    EXPECT_FALSE(scratch.exists("early"));

    // Stopped while copying: it ends at a file boundary, well before the end.
    fs::CopyThread copy(scratch.at("many"), scratch.at("copy"));
    Common::Synchronization::Thread thread(copy);
    while (copy.isRunning() && copy.status().currentFile < 10)
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    copy.Stop();
    thread.Join();
    EXPECT_FALSE(copy.isRunning());
    status = copy.status();
    EXPECT_LT(status.currentFile, status.totalFiles);
    EXPECT_EQ(status.currentFile, wholeFilesIn(scratch.path("copy")));
    EXPECT_EQ(status.currentFile * kFileSize, status.currentByte);
}

TEST(CopyRegistry, DestructionStopsAndWaitsForRunningCopies)
{
    ScratchFolder scratch;
    writeManyFiles(scratch, "many");
    {
        fs::CopyRegistry registry;
        ASSERT_TRUE(registry.Start("a", scratch.at("many"), scratch.at("a")));
        ASSERT_TRUE(registry.Start("b", scratch.at("many"), scratch.at("b")));
    }
    // Both copies have ended: nothing changes any more, and no file is cut.
    unsigned a = scratch.exists("a") ? wholeFilesIn(scratch.path("a")) : 0;
    unsigned b = scratch.exists("b") ? wholeFilesIn(scratch.path("b")) : 0;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(a, scratch.exists("a") ? wholeFilesIn(scratch.path("a")) : 0);
    EXPECT_EQ(b, scratch.exists("b") ? wholeFilesIn(scratch.path("b")) : 0);
    EXPECT_LT(a + b, 2 * kManyFiles);
}
