#include "Xmllint.h"
#include "BenchTiming.h"
#include "ExecutionWay.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace
{
// The first executable "xmllint" on PATH: qemu-x86_64 is given a file, it
// does not search PATH. Empty when there is none.
std::string xmllintOnPath()
{
    const char* path = std::getenv("PATH");
    std::istringstream folders(path ? path : "/usr/bin:/bin");
    std::string folder;
    while (std::getline(folders, folder, ':'))
    {
        std::string candidate = (folder.empty() ? "." : folder) + "/xmllint";
        if (access(candidate.c_str(), X_OK) == 0)
            return candidate;
    }
    return std::string();
}

// The command before "--noout PATH", run the way this program runs; empty
// when xmllint is not found.
std::vector<std::string> xmllintCommand()
{
    if (!i386Emulated())
    {
        setReferenceWay("native x86-64, xmllint as a child process");
        return {"xmllint"};
    }
    std::string xmllint = xmllintOnPath();
    if (xmllint.empty())
        return {};
    setReferenceWay("emulated x86-64 (qemu-x86_64), xmllint as a child process");
    return {"qemu-x86_64", xmllint};
}
} // namespace

bool timeXmllint(const char* program, const char* path, double& cpuSeconds)
{
    static const std::vector<std::string> command = xmllintCommand();
    if (command.empty())
    {
        std::fprintf(stderr, "%s: no xmllint on PATH (Debian package libxml2-utils)\n", program);
        return false;
    }
    std::vector<const char*> argv;
    for (const std::string& word : command)
        argv.push_back(word.c_str());
    argv.insert(argv.end(), {"--noout", path, nullptr});
    pid_t pid = 0;
    if (posix_spawnp(&pid, argv[0], nullptr, nullptr, const_cast<char**>(argv.data()), environ) !=
        0)
    {
        std::fprintf(stderr, "%s: cannot run %s (Debian packages libxml2-utils, qemu-user)\n",
                     program, argv[0]);
        return false;
    }
    int status = 0;
    struct rusage usage;
    while (wait4(pid, &status, 0, &usage) < 0 && errno == EINTR)
    {
    }
    cpuSeconds = usage.ru_utime.tv_sec + usage.ru_utime.tv_usec / 1e6 + usage.ru_stime.tv_sec +
                 usage.ru_stime.tv_usec / 1e6;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
    {
        std::fprintf(stderr, "%s: xmllint rejected %s\n", program, path);
        return false;
    }
    return true;
}
