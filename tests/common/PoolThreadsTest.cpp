#include "common/GlobalStaticAllocator.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

using Pool = Common::GlobalStaticAllocator;

namespace
{
unsigned totalFreeSpace()
{
    unsigned total = 0;
    for (int i = 0; i < Pool::SegmentCount; ++i)
        total += Pool::getFreeSpace(i);
    return total;
}

// Allocates, fills with its own mark, checks the mark and frees, keeping a few
// blocks alive at once; false when a block it holds was written by anyone else.
bool churn(unsigned char mark, unsigned rounds)
{
    const unsigned kLive = 8;
    void* live[kLive] = {};
    unsigned sizes[kLive] = {};
    bool intact = true;
    for (unsigned i = 0; i < rounds; ++i)
    {
        const unsigned slot = i % kLive;
        if (live[slot])
        {
            const unsigned char* bytes = static_cast<const unsigned char*>(live[slot]);
            for (unsigned k = 0; k < sizes[slot]; ++k)
                intact = intact && bytes[k] == mark;
            Pool::deallocate(live[slot]);
        }
        sizes[slot] = 8 + (i * 37 + mark) % 120;
        live[slot] = Pool::allocate(sizes[slot]);
        if (!live[slot])
            return false;
        std::memset(live[slot], mark, sizes[slot]);
    }
    for (void* p : live)
        Pool::deallocate(p);
    return intact;
}
} // namespace

// Threads that allocate at the same time never get the same memory, and every
// block comes back: the pool lock admits one at a time and wakes its waiters.
TEST(PoolThreads, ConcurrentAllocationsNeverShareMemoryAndAllReturn)
{
    Pool::Initialize();
    const unsigned before = totalFreeSpace();
    const unsigned kThreads = 4;
    bool intact[kThreads] = {};
    std::vector<std::thread> threads;
    for (unsigned t = 0; t < kThreads; ++t)
        threads.emplace_back([t, &intact] { intact[t] = churn(static_cast<unsigned char>(t + 1), 200000); });
    for (std::thread& thread : threads)
        thread.join();
    for (unsigned t = 0; t < kThreads; ++t)
        EXPECT_TRUE(intact[t]) << "thread " << t;
    EXPECT_EQ(totalFreeSpace(), before);
}
