// Mutexes between the threads of this process; and Sleep and Timer.
#include "common/ProcessMutex.h"
#include "common/RecursiveProcessMutex.h"
#include "common/ScopedMutexLock.h"
#include "common/Sleep.h"
#include "common/Thread.h"
#include "common/Timer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <ctime>
#include <memory>
#include <pthread.h>

using namespace Common::Synchronization;

namespace
{

// Locks the mutex and notes that it got in.
struct Locker : Threadable
{
    explicit Locker(ProcessMutex& mutex) : mutex(mutex) {}
    void Run() override { entered = ScopedMutexLock(mutex).locked(); }
    ProcessMutex& mutex;
    std::atomic<bool> entered{false};
};

template <class M> class ScopedLock : public ::testing::Test
{
};
typedef ::testing::Types<ProcessMutex, RecursiveProcessMutex> MutexTypes;
TYPED_TEST_SUITE(ScopedLock, MutexTypes);

TYPED_TEST(ScopedLock, ExcludesAnotherThreadForTheScope)
{
    TypeParam mutex;
    Locker locker(mutex);
    std::unique_ptr<Thread> thread;
    {
        ScopedMutexLock lock(mutex);
        ASSERT_TRUE(lock.locked());
        thread.reset(new Thread(locker));
        Sleep(50);
        EXPECT_FALSE(locker.entered);
    }
    thread->Join();
    EXPECT_TRUE(locker.entered);
}

TEST(RecursiveProcessMutex, OneThreadLocksTwiceAndOthersWaitForBothUnlocks)
{
    RecursiveProcessMutex mutex;
    ASSERT_TRUE(mutex.Lock() == 0 && mutex.Lock() == 0);
    Locker locker(mutex);
    Thread thread(locker);
    EXPECT_EQ(0, mutex.Unlock());
    Sleep(50);
    EXPECT_FALSE(locker.entered);
    EXPECT_EQ(0, mutex.Unlock());
    thread.Join();
    EXPECT_TRUE(locker.entered);
    EXPECT_NE(0, mutex.Unlock()); // not held any more
}

double seconds(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST(Timer, CountsProcessorTimeNotSleep)
{
    Timer timer;
    Sleep(200);
    EXPECT_LT(timer.elapsedSeconds(), 0.1);
    timer.Reset();
    auto processor = [] { return double(std::clock()) / CLOCKS_PER_SEC; };
    double start = processor();
    auto wallStart = std::chrono::steady_clock::now();
    while (processor() - start < 0.1 && seconds(wallStart) < 10)
    {
    }
    EXPECT_NEAR(processor() - start, timer.elapsedSeconds(), 0.02);
}

// SIGUSR1 has a handler without SA_RESTART and arrives in the middle.
TEST(Sleep, WaitsTheWholeTimeThoughASignalArrives)
{
    struct sigaction action = {}, previous;
    action.sa_handler = [](int) {};
    ASSERT_EQ(0, sigaction(SIGUSR1, &action, &previous));
    struct Interrupter : Threadable
    {
        pthread_t target = pthread_self();
        void Run() override
        {
            Sleep(30);
            pthread_kill(target, SIGUSR1);
        }
    } interrupter;
    auto start = std::chrono::steady_clock::now();
    Thread thread(interrupter);
    Sleep(150);
    double slept = seconds(start);
    thread.Join();
    sigaction(SIGUSR1, &previous, nullptr);
    EXPECT_GE(slept, 0.15);
}

} // namespace
