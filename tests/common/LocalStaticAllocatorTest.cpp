// Per-class pools: N slots, then the global pool, then the heap; and both
// pools used from two threads at once.
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

// Shaped like an XML element: a few pointers and counts.
struct Probe : Common::LocalStaticAllocator<Probe, 200, 8>
{
    explicit Probe(unsigned v = 0) : value(v), self(this), check(~v) {}
    virtual ~Probe() {}
    bool intact() const { return self == this && check == ~value; }
    unsigned value;
    Probe const* self;
    unsigned check;
};

// Larger than Probe: cannot use a Probe slot.
struct BigProbe : Probe
{
    explicit BigProbe(unsigned v) : Probe(v) {}
    char more[64] = {};
};

// A small pool, so that the threads overflow it all the time.
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

TEST_F(LocalPool, SlotsAreReusedAndALargerObjectGoesToTheGlobalPool)
{
    Probe* a = new Probe(1);
    Probe* b = new Probe(2);
    EXPECT_TRUE(Probe::isLocal(a) && !inPool(a));
    EXPECT_EQ(0u, reinterpret_cast<std::uintptr_t>(a) % alignof(Probe));
    delete a;
    Probe* c = new Probe(3);
    EXPECT_EQ(a, c); // the slot just freed
    EXPECT_TRUE(b->intact() && c->intact());
    Probe* big = new BigProbe(9);
    EXPECT_TRUE(!Probe::isLocal(big) && inPool(big));
    for (Probe* p : {b, c, big})
        delete p; // virtual destructor: the sized delete gets sizeof(BigProbe)
}

TEST_F(LocalPool, MoreThanNObjectsFallBackToTheGlobalPoolThenTheHeapAndGoBackWhereTheyCameFrom)
{
    std::vector<void*> full = fillSegmentsAfter(1);
    std::vector<Probe*> probes;
    enum
    {
        Local,
        Global,
        Heap
    } last = Local;
    unsigned counts[3] = {0, 0, 0};
    while (counts[Heap] < 25 && probes.size() < 10000)
    {
        probes.push_back(new Probe(unsigned(probes.size())));
        auto where = Probe::isLocal(probes.back()) ? Local : inPool(probes.back()) ? Global : Heap;
        ASSERT_GE(where, last) << "object " << probes.size();
        last = where;
        ++counts[where];
    }
    EXPECT_EQ(200u, counts[Local]);
    EXPECT_GT(counts[Global], 500u); // segment 0 holds them until it is full
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

// Every object carries its owner's mark, checked before it is freed; the
// pool's lists are checked while the threads run and by the fixture after.
// The small class pool overflows into the global pool all the time.
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
