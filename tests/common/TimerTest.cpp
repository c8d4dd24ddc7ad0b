#include "common/Timer.h"
#include "common/Sleep.h"
#include "common/Thread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <ctime>
#include <pthread.h>

using Common::Synchronization::Sleep;
using Common::Synchronization::Thread;
using Common::Synchronization::Threadable;
using Common::Synchronization::Timer;

namespace
{

typedef std::chrono::steady_clock WallClock;

double wallSecondsSince(WallClock::time_point start)
{
    return std::chrono::duration<double>(WallClock::now() - start).count();
}

double processorSeconds()
{
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec + now.tv_nsec / 1e9;
}

TEST(Timer, CountsProcessorTimeNotSleep)
{
    Timer timer;
    Sleep(200);
    EXPECT_LT(timer.elapsedSeconds(), 0.1);

    timer.Reset();
    double start = processorSeconds();
    WallClock::time_point wallStart = WallClock::now();
    volatile unsigned sink = 0;
    while (processorSeconds() - start < 0.1 && wallSecondsSince(wallStart) < 10)
        sink = sink + 1;
    EXPECT_NEAR(processorSeconds() - start, timer.elapsedSeconds(), 0.02);

    timer.Reset();
    EXPECT_LT(timer.elapsedSeconds(), 0.02);
}

TEST(Sleep, WaitsAtLeastTheGivenTime)
{
    WallClock::time_point start = WallClock::now();
    Sleep(60);
    EXPECT_GE(wallSecondsSince(start), 0.06);
    Sleep(0);
}

void ignore(int) {}

// Interrupts one thread with SIGUSR1 after a short while.
struct Interrupter : Threadable
{
    explicit Interrupter(pthread_t target) : target(target) {}
    void Run() override
    {
        Sleep(30);
        pthread_kill(target, SIGUSR1);
    }
    pthread_t target;
};

TEST(Sleep, IsNotCutShortByASignal)
{
    struct sigaction action = {}, previous;
    action.sa_handler = ignore; // no SA_RESTART
    ASSERT_EQ(0, sigaction(SIGUSR1, &action, &previous));

    Interrupter interrupter(pthread_self());
    WallClock::time_point start = WallClock::now();
    Thread thread(interrupter);
    Sleep(150);
    double slept = wallSecondsSince(start);
    thread.Join();
    sigaction(SIGUSR1, &previous, nullptr);
    EXPECT_GE(slept, 0.15);
}

} // namespace
