// Named mutexes between processes. Each test runs in a fresh child process
// that uses the test's own lock-file folder (the folder is read once per
// process); a second process, where needed, is forked from that child.
#include "common/Mutex.h"
#include "platform/named_mutex.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LockFiles.h"
#include "tests/support/NamedMutexFixture.h"

#include <gtest/gtest.h>

using Common::Synchronization::Mutex;
using TestSupport::Channel;
using TestSupport::ChildProcess;
using TestSupport::semaphoreValue;

namespace
{

typedef TestSupport::NamedMutexFixture NamedMutexObject;

TEST_F(NamedMutexObject, SecondProcessIsBusyUntilTheFirstReleases)
{
    auto child = [&]
    {
        Mutex first(name.c_str());
        CHILD_CHECK(first.capture(false));
        CHILD_CHECK(first.eMutexState() == Mutex::HELD);

        Channel found, released;
        auto contender = [&]
        {
            Mutex mutex(name.c_str());
            CHILD_CHECK(!mutex.capture(false));
            CHILD_CHECK(mutex.eMutexState() == Mutex::BUSY);
            CHILD_CHECK(!mutex.release()); // busy is not released
            found.send('b');
            CHILD_CHECK(released.receive() == 'r');
            CHILD_CHECK(mutex.capture(false));
            CHILD_CHECK(mutex.eMutexState() == Mutex::HELD);
            CHILD_CHECK(mutex.release());
            CHILD_CHECK(mutex.eMutexState() == Mutex::RELEASED);
            return 0;
        };
        ChildProcess second(contender);
        CHILD_CHECK(found.receive() == 'b');
        CHILD_CHECK(first.release());
        CHILD_CHECK(first.eMutexState() == Mutex::RELEASED);
        released.send('r');
        CHILD_CHECK(second.wait() == 0);
        CHILD_CHECK(semaphoreValue(key()) == 0);

        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        return 0;
    };
    EXPECT_EQ(0, inChild(child));
}

TEST_F(NamedMutexObject, TwoObjectsInOneProcessExcludeEachOther)
{
    auto child = [&]
    {
        Mutex first(name.c_str()), second(name.c_str());
        CHILD_CHECK(first.capture(false));
        CHILD_CHECK(!second.capture(false));
        CHILD_CHECK(second.eMutexState() == Mutex::BUSY);
        CHILD_CHECK(first.capture(false)); // already held: nothing more taken
        CHILD_CHECK(semaphoreValue(key()) == 1);
        CHILD_CHECK(first.release());
        CHILD_CHECK(second.capture(false));
        CHILD_CHECK(second.release());

        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        return 0;
    };
    EXPECT_EQ(0, inChild(child));
}

TEST_F(NamedMutexObject, ReleaseWithoutCaptureLeavesTheSemaphoreAlone)
{
    auto child = [&]
    {
        bool busy = true;
        CHILD_CHECK(CreateOSMutex(name.c_str(), busy) >= 0 && !busy);

        Mutex mutex(name.c_str());
        CHILD_CHECK(mutex.eMutexState() == Mutex::RELEASED);
        CHILD_CHECK(mutex.release());
        CHILD_CHECK(mutex.eMutexState() == Mutex::RELEASED);
        CHILD_CHECK(semaphoreValue(key()) == 1);

        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        return 0;
    };
    EXPECT_EQ(0, inChild(child));
}

TEST_F(NamedMutexObject, CaptureWithWaitBlocksUntilFree)
{
    auto child = [&]
    {
        Mutex first(name.c_str());
        CHILD_CHECK(first.capture(false));

        Channel taken, finish;
        auto waiter = [&]
        {
            Mutex mutex(name.c_str());
            CHILD_CHECK(mutex.capture(true));
            CHILD_CHECK(mutex.eMutexState() == Mutex::HELD);
            taken.send('t');
            CHILD_CHECK(finish.receive() == 'f');
            return 0; // the destructor releases it
        };
        ChildProcess second(waiter);
        CHILD_CHECK(TestSupport::awaitBlockedProcess(key(), GETZCNT));
        CHILD_CHECK(taken.receive(100) == '\0');
        CHILD_CHECK(first.release());
        CHILD_CHECK(taken.receive() == 't');
        CHILD_CHECK(!first.capture(false));
        CHILD_CHECK(first.eMutexState() == Mutex::BUSY);
        finish.send('f');
        CHILD_CHECK(second.wait() == 0);
        CHILD_CHECK(semaphoreValue(key()) == 0);
        CHILD_CHECK(first.capture(true));
        CHILD_CHECK(first.release());

        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        return 0;
    };
    EXPECT_EQ(0, inChild(child));
}

TEST_F(NamedMutexObject, DestructorReleases)
{
    auto child = [&]
    {
        {
            Mutex mutex(name.c_str());
            CHILD_CHECK(mutex.capture(false));
            CHILD_CHECK(semaphoreValue(key()) == 1);
        }
        CHILD_CHECK(semaphoreValue(key()) == 0);

        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        return 0;
    };
    EXPECT_EQ(0, inChild(child));
}

} // namespace
