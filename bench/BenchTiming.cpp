#include "BenchTiming.h"

#include <chrono>
#include <cstdio>

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

void reportRatio(char const* name, double ours, double reference, double goal)
{
    double ratio = ours / reference;
    if (goal > 0)
        std::printf("%s: ours %.6f s, reference %.6f s, ratio %.2f (goal <= %.2f: %s)\n", name,
                    ours, reference, ratio, goal, ratio <= goal ? "met" : "MISSED");
    else
        std::printf("%s: ours %.6f s, reference %.6f s, ratio %.2f (reported)\n", name, ours,
                    reference, ratio);
}
