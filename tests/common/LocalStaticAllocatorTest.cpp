#include "common/LocalStaticAllocator.h"
#include "tests/common/PoolTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <random>
#include <thread>
#include <vector>

using namespace PoolTest;

namespace
{

struct Probe : Common::LocalStaticAllocator<Probe, 200, 8>
{
    explicit Probe(unsigned v = 0) : value(v), self(this), check(~v) {}
    virtual ~Probe() {}
    bool intact() const { return self == this && check == ~value; }
    unsigned value;
    Probe const* self;
    unsigned check;
};

struct BigProbe : Probe
{
    explicit BigProbe(unsigned v) : Probe(v) {}
    char more[64] = {};
};

// A small pool, which the threads overflow all the time.
struct Small : Common::LocalStaticAllocator<Small, 16, 8>
{
    explicit Small(unsigned v) : value(v), check(~v) {}
    bool intact() const { return check == ~value; }
    unsigned value;
    unsigned check;
};

struct LocalPool : PoolFixture
{
    void TearDown() override
    {
        PoolFixture::TearDown();
        EXPECT_EQ(0u, Probe::localInUse());
        EXPECT_EQ(0u, Small::localInUse());
    }
};

TEST_F(LocalPool, NSlotsThenTheGlobalPoolThenTheHeapAndEachObjectGoesBackWhereItCameFrom)
{
    Probe* big = new BigProbe(9); // cannot use a slot
    EXPECT_TRUE(!Probe::isLocal(big) && inPool(big));
    delete big; // virtual destructor: the sized delete gets sizeof(BigProbe)
    std::vector<void*> full = fillSegmentsAfter(1);
    std::vector<Probe*> probes;
    unsigned counts[3] = {0, 0, 0}, last = 0; // local, global, heap
    while (counts[2] < 25 && probes.size() < 10000)
    {
        probes.push_back(new Probe(unsigned(probes.size())));
        unsigned where = Probe::isLocal(probes.back()) ? 0 : inPool(probes.back()) ? 1 : 2;
        ASSERT_GE(where, last) << "object " << probes.size();
        EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(probes.back()) % alignof(Probe));
        last = where;
        ++counts[where];
    }
    EXPECT_EQ(200u, counts[0]);
    EXPECT_GT(counts[1], 500u); // segment 0 holds them until it is full
    std::shuffle(probes.begin(), probes.end(), std::mt19937(11));
    for (size_t k = 0; k < probes.size(); k += 2)
        delete probes[k];
    Probe* again = new Probe(1); // a freed slot comes first
    EXPECT_TRUE(Probe::isLocal(again));
    delete again;
    for (size_t k = 1; k < probes.size(); k += 2)
    {
        EXPECT_TRUE(probes[k]->intact());
        delete probes[k];
    }
    freeAll(full);
}

// Every object carries its owner's mark, checked before it is freed.
TEST_F(LocalPool, TwoThreadsAllocateAndFreeConcurrently)
{
    std::atomic<unsigned> failures(0), ready(0);
    auto worker = [&](unsigned id)
    {
        std::mt19937 random(100 + id);
        ++ready;
        while (ready.load() < 2) // start together, so that the threads overlap
            std::this_thread::yield();
        std::vector<Small*> smalls;
        std::vector<Probe*> probes;
        for (unsigned step = 0; step < 400000; ++step)
        {
            unsigned value = id << 24 | step, action = random() % 4;
            if (action == 0)
                smalls.push_back(new Small(value));
            else if (action == 1)
                probes.push_back(new Probe(value));
            else if (action == 2 && !smalls.empty())
            {
                std::swap(smalls[random() % smalls.size()], smalls.back());
                failures += !smalls.back()->intact() || smalls.back()->value >> 24 != id;
                delete smalls.back();
                smalls.pop_back();
            }
            else if (action == 3 && !probes.empty())
            {
                std::swap(probes[random() % probes.size()], probes.back());
                failures += !probes.back()->intact() || probes.back()->value >> 24 != id;
                delete probes.back();
                probes.pop_back();
            }
            if (step % 5000 == 0)
                failures += !Pool::isInvariant();
        }
        for (Small* p : smalls)
            delete p;
        for (Probe* p : probes)
            delete p;
    };
    std::thread first(worker, 1), second(worker, 2);
    first.join();
    second.join();
    EXPECT_EQ(0u, failures.load());
}

} // namespace
