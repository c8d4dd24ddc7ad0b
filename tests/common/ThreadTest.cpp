#include "common/Thread.h"
#include "common/Sleep.h"
#include "common/ThreadGroup.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <atomic>
#include <sys/resource.h>

using Common::Synchronization::Sleep;
using Common::Synchronization::Thread;
using Common::Synchronization::Threadable;
using Common::Synchronization::ThreadGroup;

namespace
{

// Runs until opened, or for ten seconds at most, so that a test that wrongly
// waits for it fails instead of hanging.
struct Gate : Threadable
{
    std::atomic<bool> open{true};
    std::atomic<int> runs{0};
    void Run() override
    {
        for (int i = 0; i < 10000 && !open; ++i)
            Sleep(1);
        ++runs;
    }
};

TEST(Thread, RunsTheBodyOnceAndStaysRunningUntilJoined)
{
    Gate body;
    Thread thread(body);
    for (int i = 0; i < 5000 && body.runs == 0; ++i)
        Sleep(1);
    EXPECT_TRUE(thread.running());
    thread.Join();
    thread.Join();
    EXPECT_FALSE(thread.running());
    EXPECT_EQ(1, body.runs);

    Gate held;
    held.open = false;
    {
        Thread joinedByDestructor(held);
        Sleep(20);
        EXPECT_EQ(0, held.runs);
        held.open = true;
    }
    EXPECT_EQ(1, held.runs);
}

// Thread creation is made to fail by a process limit of 0 in a child, which
// binds only an unprivileged user (root first becomes "nobody").
TEST(Thread, FailedCreationLeavesItNotRunning)
{
    auto child = []
    {
        if (geteuid() == 0)
            CHILD_CHECK(setgid(65534) == 0 && setuid(65534) == 0);
        rlimit none = {0, 0};
        CHILD_CHECK(setrlimit(RLIMIT_NPROC, &none) == 0);
        Gate body;
        Thread thread(body);
        CHILD_CHECK(!thread.running());
        thread.Join();
        Sleep(20);
        CHILD_CHECK(!thread.running() && body.runs == 0);
        return 0;
    };
    EXPECT_EQ(0, TestSupport::runInChild(child));
}

TEST(ThreadGroup, JoinAllJoinsEveryMemberButTheRemovedOnes)
{
    Gate body, held;
    held.open = false;
    Thread first(body), second(body), kept(held);
    ThreadGroup group;
    for (Thread* thread : {&first, &kept, static_cast<Thread*>(nullptr), &second, &kept})
        group.Add(thread);
    group.Remove(&kept);
    group.JoinAll();
    EXPECT_FALSE(first.running() || second.running());
    EXPECT_EQ(2, body.runs);
    EXPECT_TRUE(kept.running());
    EXPECT_EQ(0, held.runs);
    held.open = true;
    kept.Join();
}

} // namespace
