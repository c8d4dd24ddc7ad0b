#include "common/ProcessMutex.h"
#include "common/RecursiveProcessMutex.h"
#include "common/ScopedMutexLock.h"
#include "common/Sleep.h"
#include "common/Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

using Common::Synchronization::ProcessMutex;
using Common::Synchronization::RecursiveProcessMutex;
using Common::Synchronization::ScopedMutexLock;
using Common::Synchronization::Sleep;
using Common::Synchronization::Thread;
using Common::Synchronization::Threadable;

namespace
{

// Locks the mutex for a moment and notes that it got in.
struct Locker : Threadable
{
    explicit Locker(ProcessMutex& mutex) : mutex(mutex) {}
    void Run() override
    {
        ScopedMutexLock lock(mutex);
        entered = lock.locked();
    }
    ProcessMutex& mutex;
    std::atomic<bool> entered{false};
};

TEST(RecursiveProcessMutex, OneThreadLocksTwiceAndOthersWaitForBothUnlocks)
{
    RecursiveProcessMutex mutex;
    ASSERT_EQ(0, mutex.Lock());
    ASSERT_EQ(0, mutex.Lock());

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
        ASSERT_TRUE(thread->running());
        Sleep(50);
        EXPECT_FALSE(locker.entered);
    }
    thread->Join();
    EXPECT_TRUE(locker.entered);
}

} // namespace
