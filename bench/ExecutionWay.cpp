#include "ExecutionWay.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/wait.h>

#ifndef TIDEWELL_SCRIPTS
#error "TIDEWELL_SCRIPTS must name the source tree's scripts folder"
#endif

namespace
{
bool findOut()
{
    const char* told = std::getenv("TIDEWELL_I386");
    if (told && std::strcmp(told, "native") == 0)
        return false;
    if (told && std::strcmp(told, "emulated") == 0)
        return true;
    // Exit status 0: 32-bit programs run without an emulator; 1: through one.
    int status = std::system("'" TIDEWELL_SCRIPTS "/i386-exec.sh' native");
    if (!WIFEXITED(status) || WEXITSTATUS(status) > 1)
    {
        std::fprintf(stderr, "cannot tell whether 32-bit programs run under an emulator: set "
                             "TIDEWELL_I386=native or TIDEWELL_I386=emulated\n");
        std::exit(1);
    }
    return WEXITSTATUS(status) == 1;
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
