#include "platform/named_mutex.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/ipc.h>
#include <sys/sem.h>

namespace
{

// The lock-file folder, read from the environment on the first call only.
// The text is copied, so a later change of the environment cannot affect it;
// null only when the copy could not be allocated.
char const* lockFilesDirectory()
{
    static char const* const directory = []
    {
        char const* value = std::getenv(TIDEWELL_LOCK_FILES_DIR_VARIABLE);
        return value ? static_cast<char const*>(strdup(value)) : TIDEWELL_DEFAULT_LOCK_FILES_DIR;
    }();
    return directory;
}

// semop on semaphore 0 of `id`, started again when a signal interrupts it.
int operate(int id, sembuf* ops, unsigned count)
{
    int result;
    do
        result = semop(id, ops, count);
    while (result == -1 && errno == EINTR);
    return result;
}

int operateOnce(int id, short change, short flags)
{
    sembuf op = {0, change, flags};
    return operate(id, &op, 1);
}

} // namespace

// C linkage comes from the declarations in the header.

key_t ipcNameToUnixKey(char const* name)
{
    char const* directory = lockFilesDirectory();
    if (name == nullptr || directory == nullptr)
        return -1;
    char path[PATH_MAX];
    int length = std::snprintf(path, sizeof path, "%s%s", directory, name);
    if (length < 0 || static_cast<unsigned>(length) >= sizeof path)
        return -1;
    return ftok(path, 0);
}

int GetOSMutex(char const* name)
{
    key_t key = name ? ipcNameToUnixKey(name) : IPC_PRIVATE;
    return semget(key, 1, IPC_CREAT);
}

int CreateOSMutex(char const* name, bool& busy)
{
    busy = true;
    int id = GetOSMutex(name);
    if (id < 0)
        return id;
    sembuf take[2] = {{0, 0, IPC_NOWAIT}, {0, 1, IPC_NOWAIT}};
    if (operate(id, take, 2) == 0)
        busy = false;
    return id;
}

bool ReleaseOSMutex(int id)
{
    return id >= 0 && operateOnce(id, -1, IPC_NOWAIT) == 0;
}

int WaitMutexClear(int id)
{
    sembuf take[2] = {{0, 0, 0}, {0, 1, 0}};
    return operate(id, take, 2) == 0 ? 0 : -1;
}

int WaitOSMutexClear(char const* name)
{
    int id = GetOSMutex(name);
    return id < 0 ? -1 : WaitMutexClear(id);
}

int WaitSem(char const* name)
{
    int id = GetOSMutex(name);
    return id < 0 ? -1 : operateOnce(id, -1, 0);
}

int SignalSem(char const* name)
{
    int id = GetOSMutex(name);
    return id < 0 ? -1 : operateOnce(id, 1, 0);
}

int ClearSem(char const* name)
{
    int id = GetOSMutex(name);
    return id < 0 ? -1 : semctl(id, 0, IPC_RMID);
}

bool ReleaseOSMutex(char const* name)
{
    int id = GetOSMutex(name);
    return id >= 0 && ReleaseOSMutex(id);
}
