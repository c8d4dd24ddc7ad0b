// The named-mutex operations, each test in a fresh child process that uses
// the test's own lock-file folder. Every set a test makes is removed at its
// end (ClearSem); the LockDirectory removes any a failing test left behind.
#include "platform/named_mutex.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LockFiles.h"
#include "tests/support/NamedMutexFixture.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <string>
#include <sys/ipc.h>
#include <sys/sem.h>

using TestSupport::awaitBlockedProcess;
using TestSupport::Channel;
using TestSupport::ChildProcess;
using TestSupport::semaphoreValue;

namespace
{

typedef TestSupport::NamedMutexFixture NamedMutex;

TEST_F(NamedMutex, CreateTakesAFreeMutexAndReportsBusyWhileHeldAndNoNameIsPrivate)
{
    auto child = [&]
    {
        bool busy = true;
        int id = CreateOSMutex(name.c_str(), busy);
        CHILD_CHECK(id >= 0 && !busy);
        CHILD_CHECK(semaphoreValue(key()) == 1);
        CHILD_CHECK(GetOSMutex(name.c_str()) == id);
        semid_ds status;
        CHILD_CHECK(semctl(id, 0, IPC_STAT, &status) == 0);
        CHILD_CHECK(status.sem_nsems == 1 && (status.sem_perm.mode & 0777) == 0);

        bool again = false;
        CHILD_CHECK(CreateOSMutex(name.c_str(), again) == id && again);
        CHILD_CHECK(semaphoreValue(key()) == 1);

        CHILD_CHECK(ReleaseOSMutex(id));
        CHILD_CHECK(semaphoreValue(key()) == 0);
        CHILD_CHECK(!ReleaseOSMutex(id));
        CHILD_CHECK(semaphoreValue(key()) == 0);

        CHILD_CHECK(CreateOSMutex(name.c_str(), busy) == id && !busy);
        CHILD_CHECK(ReleaseOSMutex(name.c_str()));
        CHILD_CHECK(!ReleaseOSMutex(-1));

        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        CHILD_CHECK(TestSupport::existingSet(key()) == -1);

        // Without a name, a new private set each time.
        int first = GetOSMutex(nullptr), second = GetOSMutex(nullptr);
        CHILD_CHECK(first >= 0 && second >= 0 && first != second);
        CHILD_CHECK(semctl(first, 0, IPC_STAT, &status) == 0 && status.sem_perm.__key == IPC_PRIVATE);
        CHILD_CHECK(semctl(first, 0, IPC_RMID) == 0 && semctl(second, 0, IPC_RMID) == 0);
        return 0;
    };
    EXPECT_EQ(0, inChild(child));
}

TEST_F(NamedMutex, WaitBlocksWhileHeldElsewhereAndThenTakesIt)
{
    auto child = [&]
    {
        bool busy = true;
        int id = CreateOSMutex(name.c_str(), busy);
        CHILD_CHECK(id >= 0 && !busy);

        Channel taken;
        auto waiter = [&]
        {
            CHILD_CHECK(WaitOSMutexClear(name.c_str()) == 0);
            taken.send('t');
            return 0;
        };
        ChildProcess waiting(waiter);
        CHILD_CHECK(awaitBlockedProcess(key(), GETZCNT));
        CHILD_CHECK(taken.receive(100) == '\0');
        CHILD_CHECK(ReleaseOSMutex(id));
        CHILD_CHECK(taken.receive() == 't');
        CHILD_CHECK(waiting.wait() == 0);
        // The waiter took it and, without undo, it stays held after its exit.
        CHILD_CHECK(semaphoreValue(key()) == 1);
        CHILD_CHECK(CreateOSMutex(name.c_str(), busy) == id && busy);
        CHILD_CHECK(ReleaseOSMutex(id) && WaitMutexClear(id) == 0);
        CHILD_CHECK(semaphoreValue(key()) == 1);
        CHILD_CHECK(WaitMutexClear(-1) == -1);

        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        return 0;
    };
    EXPECT_EQ(0, inChild(child));
}

void ignore(int) {}

TEST_F(NamedMutex, WaitSemBlocksUntilSignalledAndOutlastsInterruptions)
{
    auto child = [&]
    {
        // Counting: two signals allow two waits without blocking.
        CHILD_CHECK(SignalSem(name.c_str()) == 0);
        CHILD_CHECK(SignalSem(name.c_str()) == 0);
        CHILD_CHECK(semaphoreValue(key()) == 2);
        CHILD_CHECK(WaitSem(name.c_str()) == 0);
        CHILD_CHECK(WaitSem(name.c_str()) == 0);
        CHILD_CHECK(semaphoreValue(key()) == 0);

        Channel done;
        auto waiter = [&]
        {
            struct sigaction action = {};
            action.sa_handler = ignore; // no SA_RESTART: semop sees EINTR
            sigaction(SIGUSR1, &action, nullptr);
            CHILD_CHECK(WaitSem(name.c_str()) == 0);
            done.send('d');
            return 0;
        };
        ChildProcess waiting(waiter);
        CHILD_CHECK(awaitBlockedProcess(key(), GETNCNT));
        CHILD_CHECK(kill(waiting.pid(), SIGUSR1) == 0);
        CHILD_CHECK(done.receive(200) == '\0');
        CHILD_CHECK(awaitBlockedProcess(key(), GETNCNT));
        CHILD_CHECK(SignalSem(name.c_str()) == 0);
        CHILD_CHECK(done.receive() == 'd');
        CHILD_CHECK(waiting.wait() == 0);
        CHILD_CHECK(semaphoreValue(key()) == 0);

        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        return 0;
    };
    EXPECT_EQ(0, inChild(child));
}

TEST_F(NamedMutex, ClearSemEndsAWaitWithFailure)
{
    auto child = [&]
    {
        bool busy = true;
        CHILD_CHECK(CreateOSMutex(name.c_str(), busy) >= 0 && !busy);
        Channel ended;
        auto waiter = [&]
        {
            int id = GetOSMutex(name.c_str());
            CHILD_CHECK(id >= 0);
            CHILD_CHECK(WaitMutexClear(id) == -1 && errno == EIDRM);
            ended.send('e');
            return 0;
        };
        ChildProcess waiting(waiter);
        CHILD_CHECK(awaitBlockedProcess(key(), GETZCNT));
        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        CHILD_CHECK(ended.receive() == 'e');
        CHILD_CHECK(waiting.wait() == 0);
        return 0;
    };
    EXPECT_EQ(0, inChild(child));
}

// As root, permission bits 0 do not matter (CAP_IPC_OWNER). Any other user,
// the set's creator included, cannot operate such a set: the mutex is never
// free for it, and the waits fail at once instead of blocking. The creator
// can still remove the set. Root runs this as the user "nobody".
TEST(NamedMutexUnprivileged, MutexIsNeverFree)
{
    TestSupport::LockDirectory locks;
    std::string name = locks.lockFile("mutex");
    ASSERT_FALSE(name.empty());
    auto child = [&]
    {
        locks.exportToEnvironment();
        if (geteuid() == 0)
        {
            CHILD_CHECK(chmod(locks.path().c_str(), 0755) == 0);
            CHILD_CHECK(setgid(65534) == 0 && setuid(65534) == 0);
        }
        CHILD_CHECK(ipcNameToUnixKey(name.c_str()) == locks.key(name));

        bool busy = false;
        int id = CreateOSMutex(name.c_str(), busy);
        CHILD_CHECK(id >= 0 && busy);
        CHILD_CHECK(WaitMutexClear(id) == -1 && errno == EACCES);
        CHILD_CHECK(WaitSem(name.c_str()) == -1 && errno == EACCES);
        CHILD_CHECK(SignalSem(name.c_str()) == -1 && errno == EACCES);
        CHILD_CHECK(!ReleaseOSMutex(id));
        CHILD_CHECK(ClearSem(name.c_str()) == 0);
        return 0;
    };
    EXPECT_EQ(0, TestSupport::runInChild(child));
}

} // namespace
