#include "BenchTiming.h"
#include "ExecutionWay.h"
#include "tests/support/Files.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

double bestSeconds(int rounds, std::function<void()> const& work)
{
    double best = 1e30;
    for (int i = 0; i < rounds; ++i)
    {
        auto start = std::chrono::steady_clock::now();
        work();
        std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        if (took.count() < best)
            best = took.count();
    }
    return best;
}

double cpuSeconds()
{
    timespec t;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return t.tv_sec + t.tv_nsec / 1e9;
}

namespace
{
std::string& referenceWay()
{
    static std::string way;
    return way;
}
} // namespace

void setReferenceWay(std::string const& way)
{
    referenceWay() = way;
}

void printVerdict(double ratio, double goal)
{
    if (goal > 0)
        std::printf(" (goal <= %.2f: %s)", goal, ratio <= goal ? "met" : "MISSED");
    else
        std::printf(" (reported)");
}

void reportRatio(char const* name, double ours, double reference, double goal)
{
    std::string theirs =
        referenceWay().empty() ? std::string(ourWay()) + ", in this process" : referenceWay();
    std::printf("%s: ours %.6f s, reference %.6f s, ratio %.2f", name, ours, reference,
                ours / reference);
    printVerdict(ours / reference, goal);
    std::printf(" [ours: %s; reference: %s]\n", ourWay(), theirs.c_str());
}

void readPlain(std::string const& path)
{
    int fd = open(path.c_str(), O_RDONLY);
    struct stat info;
    fstat(fd, &info);
    char* buffer = static_cast<char*>(std::malloc(info.st_size));
    if (read(fd, buffer, info.st_size) != info.st_size)
        std::abort();
    close(fd);
    std::free(buffer);
}

void writeFile(std::string const& path, std::string const& text)
{
    if (!TestSupport::writeFile(path, text))
    {
        std::perror(path.c_str());
        std::exit(1);
    }
}

