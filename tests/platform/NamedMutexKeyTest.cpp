// How names become System V keys. Every check runs in a fresh child process,
// because the lock-file folder is read only once per process.
#include "platform/named_mutex.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LockFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <sys/ipc.h>

using TestSupport::LockDirectory;
using TestSupport::runInChild;

namespace
{

TEST(NamedMutexKey, IsTheKeyOfTheLockFileInTheFolderReadOnceOnFirstUse)
{
    LockDirectory first, second;
    std::string name = first.lockFile("tool");
    ASSERT_FALSE(name.empty());
    std::string other = second.path() + name;
    ASSERT_EQ(0, close(open(other.c_str(), O_CREAT | O_WRONLY, 0644)));
    auto child = [&]
    {
        first.exportToEnvironment();
        key_t key = ipcNameToUnixKey(name.c_str());
        CHILD_CHECK(key != -1 && key == ftok((first.path() + name).c_str(), 0));
        second.exportToEnvironment();
        CHILD_CHECK(ftok(other.c_str(), 0) != key);
        CHILD_CHECK(ipcNameToUnixKey(name.c_str()) == key);
        CHILD_CHECK(ipcNameToUnixKey("absent") == -1);
        CHILD_CHECK(ipcNameToUnixKey(nullptr) == -1);
        CHILD_CHECK(ipcNameToUnixKey(std::string(5000, 'x').c_str()) == -1);
        return 0;
    };
    EXPECT_EQ(0, runInChild(child));
    unlink(other.c_str());
}

// With the variable unset the folder is the default one. The empty name
// makes the path the folder itself, which exists on most systems.
TEST(NamedMutexKey, UnsetVariableMeansDefaultFolder)
{
    auto child = []
    {
        unsetenv("TALVE_LOCK_FILES_DIR");
        CHILD_CHECK(ipcNameToUnixKey("") == ftok(TIDEWELL_DEFAULT_LOCK_FILES_DIR, 0));
        CHILD_CHECK(ipcNameToUnixKey("no-such-lock-file-d41d8cd9") == -1);
        return 0;
    };
    EXPECT_EQ(0, runInChild(child));
}

} // namespace
