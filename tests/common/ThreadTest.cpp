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

struct Counter : Threadable
{
    std::atomic<int> runs{0};
    void Run() override { ++runs; }
};

// Runs until opened, or for ten seconds at most, so that a test that wrongly
// waits for it fails instead of hanging.
struct Gate : Threadable
{
    std::atomic<bool> open{false};
    std::atomic<bool> finished{false};
    void Run() override
    {
        for (int i = 0; i < 10000 && !open; ++i)
            Sleep(1);
        finished = true;
    }
};

TEST(Thread, RunsTheBodyOnceAndJoins)
{
    Counter counter;
    Thread thread(counter);
    EXPECT_TRUE(thread.running());
    thread.Join();
    EXPECT_FALSE(thread.running());
    EXPECT_EQ(1, counter.runs);
    thread.Join();
    EXPECT_FALSE(thread.running());
    EXPECT_EQ(1, counter.runs);
}

TEST(Thread, StaysRunningUntilJoinedAfterTheBodyEnds)
{
    Counter counter;
    Thread thread(counter);
    for (int i = 0; i < 5000 && counter.runs == 0; ++i)
        Sleep(1);
    EXPECT_EQ(1, counter.runs);
    EXPECT_TRUE(thread.running());
}

TEST(Thread, DestructorJoinsARunningThread)
{
    Gate gate;
    {
        Thread thread(gate);
        Sleep(20);
        EXPECT_FALSE(gate.finished);
        gate.open = true;
    }
    EXPECT_TRUE(gate.finished);
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
        Counter counter;
        Thread thread(counter);
        CHILD_CHECK(!thread.running());
        thread.Join();
        CHILD_CHECK(!thread.running());
        Sleep(20);
        CHILD_CHECK(counter.runs == 0);
        return 0;
    };
    EXPECT_EQ(0, TestSupport::runInChild(child));
}

TEST(ThreadGroup, JoinAllJoinsEveryMember)
{
    Counter counter;
    Thread first(counter), second(counter), third(counter);
    ThreadGroup group;
    group.Add(&first);
    group.Add(&second);
    group.Add(&third);
    group.Add(nullptr); // skipped
    group.JoinAll();
    EXPECT_FALSE(first.running());
    EXPECT_FALSE(second.running());
    EXPECT_FALSE(third.running());
    EXPECT_EQ(3, counter.runs);
    group.JoinAll();
}

TEST(ThreadGroup, RemovedThreadIsNotJoined)
{
    Counter counter;
    Gate gate;
    Thread first(counter), held(gate), last(counter);
    ThreadGroup group;
    group.Add(&first);
    group.Add(&held);
    group.Add(&last);
    group.Add(&held);
    group.Remove(&held);
    group.JoinAll();
    EXPECT_FALSE(first.running());
    EXPECT_FALSE(last.running());
    EXPECT_TRUE(held.running());
    EXPECT_FALSE(gate.finished);
    gate.open = true;
    held.Join();
    EXPECT_TRUE(gate.finished);
}

} // namespace
