#pragma once

// A private lock-file folder for the named-mutex tests: concurrent runs
// never share a semaphore set.

#include "tests/support/ScratchFolder.h"

#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace TestSupport
{

// The set of `key` if it exists, else -1. Never creates one.
inline int existingSet(key_t key)
{
    return key == -1 ? -1 : semget(key, 1, 0);
}

// The value of semaphore 0 of the existing set of `key`; -1 if none.
inline int semaphoreValue(key_t key)
{
    int id = existingSet(key);
    return id < 0 ? -1 : semctl(id, 0, GETVAL);
}

// Waits (up to ten seconds) until a process blocks on semaphore 0 of `key`:
// `which` is GETZCNT (taking a mutex) or GETNCNT (WaitSem).
inline bool awaitBlockedProcess(key_t key, int which)
{
    for (int i = 0; i < 2000; ++i)
    {
        int id = existingSet(key);
        if (id >= 0 && semctl(id, 0, which) > 0)
            return true;
        usleep(5000);
    }
    return false;
}

// Whether this process may operate sets of permission bits 0 (root only).
inline bool canOperateModeZeroSets()
{
    int id = semget(IPC_PRIVATE, 1, 0);
    if (id < 0)
        return false;
    bool allowed = semctl(id, 0, GETVAL) != -1;
    semctl(id, 0, IPC_RMID);
    return allowed;
}

// A fresh folder, removed at the end with its files and the semaphore sets
// of the lock files it handed out.
class LockDirectory
{
public:
    LockDirectory() = default;
    ~LockDirectory()
    {
        for (std::string const& name : m_names)
        {
            int id = existingSet(key(name));
            if (id >= 0)
                semctl(id, 0, IPC_RMID);
        }
    }

    LockDirectory(LockDirectory const&) = delete;
    LockDirectory& operator=(LockDirectory const&) = delete;

    // The folder, ending in "/".
    std::string path() const { return m_folder.path(); }

    // A new lock file `base` + a number whose key has no semaphore set yet
    // (ftok keys of different files can coincide); its name.
    std::string lockFile(char const* base)
    {
        for (unsigned n = 0; n < 100; ++n)
        {
            std::string name = base + std::to_string(n);
            int fd = open(m_folder.path(name).c_str(), O_CREAT | O_EXCL | O_WRONLY, 0644);
            if (fd < 0)
                continue;
            close(fd);
            // Every file stays to the end, so that no next file reuses its
            // inode (its key).
            if (existingSet(key(name)) >= 0)
                continue;
            m_names.push_back(name);
            return name;
        }
        return std::string();
    }

    // The key of a lock file, computed without the library.
    key_t key(std::string const& name) const { return ftok(m_folder.path(name).c_str(), 0); }

    // Makes this the process's lock-file folder; the library reads it once:
    // call this in a fresh child before any named-mutex function.
    void exportToEnvironment() const { setenv("TALVE_LOCK_FILES_DIR", path().c_str(), 1); }

private:
    ScratchFolder m_folder;
    std::vector<std::string> m_names; // the lock files handed out
};

} // namespace TestSupport
