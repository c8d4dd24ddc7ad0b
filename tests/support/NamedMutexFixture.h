#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/LockFiles.h"

#include <gtest/gtest.h>

#include <string>

namespace TestSupport
{

// A test of the named mutexes, with its own lock-file folder and one lock
// file `name`. Skipped unless this process may operate sets with permission
// bits 0, as the named mutexes make them (only root may).
class NamedMutexFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        if (!canOperateModeZeroSets())
            GTEST_SKIP() << "needs root: the named mutexes' sets have permission bits 0";
        name = locks.lockFile("mutex");
        ASSERT_FALSE(name.empty());
    }

    // The key of `name`, computed without the library.
    key_t key() const { return locks.key(name); }

    // Runs body() in a fresh child process whose lock-file folder is this
    // test's (the library reads the folder once per process).
    template <class Body> int inChild(Body body)
    {
        return runInChild(
            [&]
            {
                locks.exportToEnvironment();
                return body();
            });
    }

    LockDirectory locks;
    std::string name;
};

} // namespace TestSupport
