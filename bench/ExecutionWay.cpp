#include "ExecutionWay.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <spawn.h>
#include <sys/wait.h>

#ifndef TIDEWELL_SCRIPTS
#error "TIDEWELL_SCRIPTS must name the source tree's scripts folder"
#endif

extern char** environ;

namespace
{
// Exit status of "scripts/i386-exec.sh native": 0 when 32-bit programs run
// without an emulator, 1 when they run through one; -1 when it cannot run.
int askScript()
{
    const char* script = TIDEWELL_SCRIPTS "/i386-exec.sh";
    const char* argv[] = {script, "native", nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, script, nullptr, nullptr, const_cast<char**>(argv), environ) != 0)
        return -1;
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR)
    {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool findOut()
{
    const char* told = std::getenv("TIDEWELL_I386");
    if (told && std::strcmp(told, "native") == 0)
        return false;
    if (told && std::strcmp(told, "emulated") == 0)
        return true;
    int status = askScript();
    if (status != 0 && status != 1)
    {
        std::fprintf(stderr, "cannot tell whether 32-bit programs run under an emulator: set "
                             "TIDEWELL_I386=native or TIDEWELL_I386=emulated\n");
        std::exit(1);
    }
    return status == 1;
}
} // namespace

bool i386Emulated()
{
    static const bool emulated = findOut();
    return emulated;
}

const char* ourWay()
{
    return i386Emulated() ? "emulated i386 (qemu-i386)" : "native i386";
}
