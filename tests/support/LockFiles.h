#pragma once

// A private lock-file folder for the named-mutex tests, so that concurrent
// test runs on one machine never share a semaphore set.

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

// Waits (up to ten seconds) until a process is blocked on semaphore 0 of the
// set of `key`: `which` is GETZCNT for one waiting for the value 0 (taking a
// mutex) or GETNCNT for one waiting for it to rise (WaitSem).
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

// Whether this process may operate a set whose permission bits are 0, as the
// named mutexes create them: only with CAP_IPC_OWNER (root).
inline bool canOperateModeZeroSets()
{
    int id = semget(IPC_PRIVATE, 1, 0);
    if (id < 0)
        return false;
    bool allowed = semctl(id, 0, GETVAL) != -1;
    semctl(id, 0, IPC_RMID);
    return allowed;
}

// A fresh folder "/tmp/tidewell-locks-XXXXXX/". Its destructor removes the
// semaphore sets of the lock files it handed out (should a test have left
// one), the files and the folder.
class LockDirectory
{
public:
    LockDirectory()
    {
        char pattern[] = "/tmp/tidewell-locks-XXXXXX";
        if (mkdtemp(pattern))
            m_path = std::string(pattern) + "/";
    }
    ~LockDirectory()
    {
        for (std::string const& name : m_names)
        {
            int id = existingSet(key(name));
            if (id >= 0)
                semctl(id, 0, IPC_RMID);
        }
        for (std::string const& name : m_files)
            unlink((m_path + name).c_str());
        if (!m_path.empty())
            rmdir(m_path.c_str());
    }

    LockDirectory(LockDirectory const&) = delete;
    LockDirectory& operator=(LockDirectory const&) = delete;

    // The folder, ending in "/"; empty if it could not be made.
    std::string const& path() const { return m_path; }

    // Creates a lock file named `base` followed by a number and returns its
    // name. The number is chosen so that no semaphore set exists yet for the
    // file's key (ftok keys of different files can coincide).
    std::string lockFile(char const* base)
    {
        for (unsigned n = 0; n < 100; ++n)
        {
            std::string name = base + std::to_string(n);
            int fd = open((m_path + name).c_str(), O_CREAT | O_EXCL | O_WRONLY, 0644);
            if (fd < 0)
                continue;
            close(fd);
            // A file whose key is taken stays until the end, so that the
            // next file cannot reuse its inode and therefore its key.
            m_files.push_back(name);
            if (existingSet(key(name)) >= 0)
                continue;
            m_names.push_back(name);
            return name;
        }
        return std::string();
    }

    // The key of a lock file, computed without the library.
    key_t key(std::string const& name) const { return ftok((m_path + name).c_str(), 0); }

    // Makes this folder the lock-file folder of the calling process. The
    // library reads it once, on its first use: call this in a fresh child
    // before any named-mutex function.
    void exportToEnvironment() const { setenv("TALVE_LOCK_FILES_DIR", m_path.c_str(), 1); }

private:
    std::string m_path;
    std::vector<std::string> m_files; // every lock file made
    std::vector<std::string> m_names; // those handed out
};

} // namespace TestSupport
