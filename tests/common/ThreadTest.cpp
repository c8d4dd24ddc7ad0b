#include "common/Thread.h"
#include "common/ProcessMutex.h"
#include "common/RecursiveProcessMutex.h"
#include "common/ScopedMutexLock.h"
#include "common/Sleep.h"
#include "common/ThreadGroup.h"
#include "common/Timer.h"
#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <ctime>
#include <functional>
#include <memory>
#include <pthread.h>
#include <sys/resource.h>
#include <thread>

using namespace Common::Synchronization;

namespace
{

struct Locker : Threadable
{
    explicit Locker(ProcessMutex& mutex) : mutex(mutex) {}
    void Run() override { entered = ScopedMutexLock(mutex).locked(); }
    ProcessMutex& mutex;
    std::atomic<bool> entered{false};
};

// Whether another thread waits for `mutex` until release() runs, and then gets in.
bool excludesUntil(ProcessMutex& mutex, std::function<void()> release)
{
    Locker locker(mutex);
    Thread thread(locker);
    Sleep(50);
    bool waited = !locker.entered;
    release();
    thread.Join();
    return waited && locker.entered;
}

TEST(ProcessMutex, AScopedLockExcludesOtherThreadsAndTheHolderMayLockARecursiveOneAgain)
{
    ProcessMutex plain;
    std::unique_ptr<ScopedMutexLock> lock(new ScopedMutexLock(plain));
    ASSERT_TRUE(lock->locked());
    EXPECT_TRUE(excludesUntil(plain, [&] { lock.reset(); }));
    RecursiveProcessMutex mutex;
    ASSERT_TRUE(mutex.Lock() == 0 && mutex.Lock() == 0 && mutex.Unlock() == 0);
    EXPECT_TRUE(excludesUntil(mutex, [&] { EXPECT_EQ(0, mutex.Unlock()); }));
    EXPECT_NE(0, mutex.Unlock()); // not held any more
}

double seconds(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// SIGUSR1, with a handler without SA_RESTART, arrives in the middle.
TEST(Sleep, WaitsTheWholeTimeThoughASignalArrivesAndATimerCountsProcessorTimeNotSleep)
{
    struct sigaction action = {}, previous;
    action.sa_handler = [](int) {};
    ASSERT_EQ(0, sigaction(SIGUSR1, &action, &previous));
    pthread_t target = pthread_self();
    Timer timer;
    auto start = std::chrono::steady_clock::now();
    std::thread interrupter(
        [target]
        {
            Sleep(30);
            pthread_kill(target, SIGUSR1);
        });
    Sleep(150);
    double slept = seconds(start);
    interrupter.join();
    sigaction(SIGUSR1, &previous, nullptr);
    EXPECT_GE(slept, 0.15);
    EXPECT_LT(timer.elapsedSeconds(), 0.1);

    timer.Reset();
    auto processor = [] { return double(std::clock()) / CLOCKS_PER_SEC; };
    double begin = processor();
    start = std::chrono::steady_clock::now();
    while (processor() - begin < 0.1 && seconds(start) < 10)
        continue;
    EXPECT_NEAR(processor() - begin, timer.elapsedSeconds(), 0.02);
}

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

TEST(Thread, RunsTheBodyOnceUntilJoinedAndAGroupJoinsAllButTheRemovedOnes)
{
    Gate body, held;
    held.open = false;
    Thread first(body), second(body);
    std::unique_ptr<Thread> kept(new Thread(held));
    for (int i = 0; i < 5000 && body.runs < 2; ++i)
        Sleep(1);
    EXPECT_TRUE(first.running()); // its body has ended, but it is not joined
    ThreadGroup group;
    for (Thread* thread : {&first, kept.get(), static_cast<Thread*>(nullptr), &second, kept.get()})
        group.Add(thread);
    group.Remove(kept.get());
    group.JoinAll();
    first.Join();
    EXPECT_FALSE(first.running() || second.running());
    EXPECT_EQ(2, body.runs);
    EXPECT_TRUE(kept->running());
    EXPECT_EQ(0, held.runs);
    held.open = true;
    kept.reset(); // the destructor joins
    EXPECT_EQ(1, held.runs);
}

} // namespace
