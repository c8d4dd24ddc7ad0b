#pragma once

// Named system-wide mutexes over System V semaphores.
//
// A name stands for one semaphore set with one semaphore (number 0), found
// through the key of a lock file: ftok("<lock-file folder><name>", 0). The
// semaphore's value is 0 when the mutex is free and 1 when it is held. No
// operation uses SEM_UNDO, so a process that exits while holding a mutex
// leaves it held until someone releases it or removes the set (ClearSem).
// The semaphores are system-wide: they exclude other processes and other
// threads of this process alike, and they do not know their holder (any
// process may release).
//
// The lock-file folder is read once per process, on first use, from the
// environment variable TALVE_LOCK_FILES_DIR and is not read again. Its text
// is put directly before the name, so it must end with "/". When the
// variable is unset the folder is TIDEWELL_DEFAULT_LOCK_FILES_DIR.
//
// The lock file must exist: when ftok fails the key is -1, and every name
// whose lock file is missing then shares that one set.
//
// Sets are created with permission bits 0. A process with CAP_IPC_OWNER
// (root) may operate such a set anyway; any other process, its creator
// included, gets EACCES from semop and semctl(GETVAL): for it a mutex is
// never free (CreateOSMutex always reports busy, the waits fail at once).
// Only the creator or owner can still remove the set (IPC_RMID).
//
// Results follow the C layer's convention: int 0 for success and -1 for
// failure (errno set), set ids >= 0, bool for the release. The functions have
// C linkage; the header is C++ (CreateOSMutex takes a bool reference, and
// ReleaseOSMutex by name is a C++ overload of the C-linkage ReleaseOSMutex).

#include <sys/types.h>

#define TIDEWELL_LOCK_FILES_DIR_VARIABLE "TALVE_LOCK_FILES_DIR"
#define TIDEWELL_DEFAULT_LOCK_FILES_DIR "/var/lock/"

extern "C"
{

    // The key of the lock file "<folder><name>"; -1 when ftok fails, when the
    // name is null, or when the path is too long.
    key_t ipcNameToUnixKey(char const* name);

    // The set of `name` (created if needed, permission bits 0); a null name
    // makes a new private set (IPC_PRIVATE). The set id, or negative on failure.
    int GetOSMutex(char const* name);

    // Tries to take the mutex without blocking. `busy` is false when the caller
    // now holds it and true when it could not be taken (held elsewhere, or the
    // semaphore cannot be operated). Returns the set id, or the negative result
    // of GetOSMutex (busy then stays true).
    int CreateOSMutex(char const* name, bool& busy);

    // Releases the mutex (subtracts 1 without blocking). False when `id` is
    // negative or the semaphore is not held.
    bool ReleaseOSMutex(int id);

    // Blocks until the mutex is free, then takes it (one atomic operation);
    // a signal does not end the wait. 0, or -1 when the set cannot be operated.
    int WaitMutexClear(int id);
    int WaitOSMutexClear(char const* name);

    // Counting use of the same semaphore: WaitSem subtracts 1, blocking while the
    // value is 0 (a signal does not end the wait); SignalSem adds 1. 0 or -1.
    int WaitSem(char const* name);
    int SignalSem(char const* name);

    // Removes the set of `name` (IPC_RMID); processes blocked on it fail with
    // EIDRM. 0 or -1.
    int ClearSem(char const* name);

} // extern "C"

// Releases the mutex of `name`; false when its set cannot be obtained or the
// semaphore is not held. (C++ linkage: only one ReleaseOSMutex can have C
// linkage, and that is the form taking a set id.)
bool ReleaseOSMutex(char const* name);
