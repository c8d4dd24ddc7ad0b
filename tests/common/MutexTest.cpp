// Each test runs in a fresh child process with the test's own lock-file
// folder (read once per process); a second process is forked from that child.
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

// Other objects of the holder's process are busy too.
TEST_F(NamedMutexObject, AnotherHolderIsBusyUntilTheFirstReleasesOrWaitsAndIdleOnesReleaseNothing)
{
    auto child = [&]
    {
        Mutex first(name.c_str());
        CHILD_CHECK(first.capture(false) && first.eMutexState() == Mutex::HELD);
        Channel toFirst, toSecond;
        ChildProcess second(
            [&]
            {
                Mutex mutex(name.c_str());
                CHILD_CHECK(!mutex.capture(false) && mutex.eMutexState() == Mutex::BUSY);
                CHILD_CHECK(!mutex.release()); // busy is not released
                toFirst.send('b');
                CHILD_CHECK(mutex.capture(true)); // waits, then holds it to the end
                toFirst.send('t');
                CHILD_CHECK(toSecond.receive() == 'f');
                return 0; // the destructor releases it
            });
        CHILD_CHECK(toFirst.receive() == 'b');
        CHILD_CHECK(TestSupport::awaitBlockedProcess(key(), GETZCNT));
        CHILD_CHECK(toFirst.receive(100) == '\0');
        CHILD_CHECK(first.release() && first.eMutexState() == Mutex::RELEASED);
        CHILD_CHECK(toFirst.receive() == 't');
        CHILD_CHECK(!first.capture(false) && first.eMutexState() == Mutex::BUSY);
        toSecond.send('f');
        CHILD_CHECK(second.wait() == 0);
        CHILD_CHECK(semaphoreValue(key()) == 0);
        {
            Mutex holder(name.c_str()), idle(name.c_str());
            CHILD_CHECK(holder.capture(false));
            CHILD_CHECK(holder.capture(false)); // already held: nothing more taken
            CHILD_CHECK(semaphoreValue(key()) == 1);
            CHILD_CHECK(idle.release() && idle.eMutexState() == Mutex::RELEASED);
            CHILD_CHECK(semaphoreValue(key()) == 1); // never captured: left alone
            CHILD_CHECK(!first.capture(false) && first.eMutexState() == Mutex::BUSY);
        } // the destructor releases
        CHILD_CHECK(semaphoreValue(key()) == 0);
        CHILD_CHECK(first.capture(false) && first.release());
        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        return 0;
    };
    EXPECT_EQ(0, inChild(child));
}

} // namespace
