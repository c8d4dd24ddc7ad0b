#include "ProcessClock.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>

extern char** environ;

namespace
{
double seconds(clockid_t id)
{
    timespec t;
    clock_gettime(id, &t);
    return t.tv_sec + t.tv_nsec / 1e9;
}
} // namespace

Clock now()
{
    return {seconds(CLOCK_MONOTONIC), seconds(CLOCK_PROCESS_CPUTIME_ID)};
}

Clock since(const Clock& start)
{
    Clock end = now();
    return {end.wall - start.wall, end.cpu - start.cpu};
}

Clock best(const Clock& a, const Clock& b)
{
    return {std::min(a.wall, b.wall), std::min(a.cpu, b.cpu)};
}

bool timeXmllint(const char* program, const char* path, Clock& took)
{
    const char* argv[] = {"xmllint", "--noout", path, nullptr};
    Clock start = now();
    pid_t pid = 0;
    if (posix_spawnp(&pid, "xmllint", nullptr, nullptr, const_cast<char**>(argv), environ) != 0)
    {
        std::fprintf(stderr, "%s: cannot run xmllint (Debian package libxml2-utils)\n", program);
        return false;
    }
    int status = 0;
    struct rusage usage;
    while (wait4(pid, &status, 0, &usage) < 0 && errno == EINTR)
    {
    }
    took.wall = since(start).wall;
    took.cpu = usage.ru_utime.tv_sec + usage.ru_utime.tv_usec / 1e6 + usage.ru_stime.tv_sec +
               usage.ru_stime.tv_usec / 1e6;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    {
        std::fprintf(stderr, "%s: xmllint rejected %s\n", program, path);
        return false;
    }
    return true;
}
