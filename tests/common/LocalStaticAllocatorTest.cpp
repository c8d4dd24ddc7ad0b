#include "common/LocalStaticAllocator.h"
#include "tests/common/PoolTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

using namespace PoolTest;

namespace
{

bool inGlobalPool(void const* p)
{
    int i;
    return Pool::getSegmentFrom(p, i);
}

bool aligned(void const* p, std::size_t alignment)
{
    return reinterpret_cast<std::uintptr_t>(p) % alignment == 0;
}

// Shaped like an XML element: a few pointers and counts.
struct Probe : Common::LocalStaticAllocator<Probe, 200, 8>
{
    explicit Probe(unsigned v = 0) : value(v), self(this), check(~v) {}
    virtual ~Probe() {}
    bool intact() const { return self == this && check == ~value; }
    unsigned value;
    Probe const* self;
    unsigned check;
    char text[12] = "probe";
};

// Larger than Probe: cannot use a Probe slot.
struct BigProbe : Probe
{
    explicit BigProbe(unsigned v) : Probe(v) {}
    char more[64] = {};
};

// A small pool, so that the stress test overflows it all the time.
struct Small : Common::LocalStaticAllocator<Small, 16, 8>
{
    explicit Small(unsigned v) : value(v), check(~v) {}
    unsigned value;
    unsigned check;
};

struct Global : Common::GlobalStaticAllocator
{
    explicit Global(unsigned v) : value(v), check(~v) {}
    unsigned value;
    unsigned check;
    double d = 2.5;
};

class LocalPool : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Pool::Initialize();
        m_before = snapshot();
        m_probesInUse = Probe::localInUse();
    }
    void TearDown() override
    {
        EXPECT_TRUE(Pool::isInvariant());
        EXPECT_EQ(snapshot(), m_before) << "the test did not give back all it took";
        EXPECT_EQ(Probe::localInUse(), m_probesInUse);
        EXPECT_EQ(Small::localInUse(), 0u);
    }

    Layout m_before;
    unsigned m_probesInUse = 0;
};

} // namespace

TEST_F(LocalPool, ObjectsUpToASlotComeFromTheClassPoolAndSlotsAreReused)
{
    ASSERT_EQ(Probe::localInUse(), 0u);
    Probe* a = new Probe(1);
    Probe* b = new Probe(2);
    EXPECT_TRUE(Probe::isLocal(a));
    EXPECT_TRUE(Probe::isLocal(b));
    EXPECT_FALSE(inGlobalPool(a));
    EXPECT_TRUE(aligned(a, alignof(Probe)));
    EXPECT_EQ(Probe::localInUse(), 2u);
    delete a;
    EXPECT_EQ(Probe::localInUse(), 1u);
    Probe* c = new Probe(3); // the slot just freed
    EXPECT_EQ(c, a);
    EXPECT_TRUE(c->intact());
    EXPECT_TRUE(b->intact());
    delete b;
    delete c;

    // An object larger than a slot (a derived class) goes to the global pool.
    Probe* big = new BigProbe(9);
    EXPECT_FALSE(Probe::isLocal(big));
    EXPECT_TRUE(inGlobalPool(big));
    EXPECT_TRUE(big->intact());
    delete big; // virtual destructor: the sized delete gets sizeof(BigProbe)
}

// More than N objects: the class pool, then the global pool, then the heap,
// each object going back where it came from (LeakSanitizer checks the heap).
TEST_F(LocalPool, MoreThanNObjectsFallBackToTheGlobalPoolThenTheHeap)
{
    ASSERT_TRUE(isPristine(m_before)) << "an earlier test left blocks in the pool";
    ASSERT_EQ(Probe::localInUse(), 0u);

    // Leave the global pool with only segment 0.
    std::vector<void*> full;
    for (int i = 0; i < Pool::SegmentCount; ++i)
    {
        full.push_back(Pool::allocate(65533));
        ASSERT_NE(full.back(), nullptr);
    }
    Pool::deallocate(full.front());
    full.erase(full.begin());

    std::vector<Probe*> local, global, heap;
    unsigned serial = 0;
    while (heap.size() < 25)
    {
        ASSERT_LT(serial, 10000u);
        Probe* p = new Probe(serial++);
        ASSERT_TRUE(aligned(p, alignof(Probe)));
        if (Probe::isLocal(p))
        {
            ASSERT_TRUE(global.empty() && heap.empty()) << "class pool used after it was full";
            local.push_back(p);
        }
        else if (inGlobalPool(p))
        {
            ASSERT_EQ(local.size(), 200u);
            ASSERT_TRUE(heap.empty());
            global.push_back(p);
        }
        else
        {
            ASSERT_FALSE(global.empty());
            heap.push_back(p);
        }
    }
    EXPECT_EQ(local.size(), 200u);
    EXPECT_GT(global.size(), 500u); // segment 0 holds them until it is full
    EXPECT_EQ(Probe::localInUse(), 200u);

    std::vector<Probe*> all;
    all.insert(all.end(), local.begin(), local.end());
    all.insert(all.end(), global.begin(), global.end());
    all.insert(all.end(), heap.begin(), heap.end());
    std::mt19937 random(11);
    std::shuffle(all.begin(), all.end(), random);
    // Delete half, then make a few new ones: freed class slots come first.
    size_t half = all.size() / 2;
    for (size_t k = 0; k < half; ++k)
    {
        ASSERT_TRUE(all[k]->intact());
        delete all[k];
    }
    unsigned freeSlots = 200 - Probe::localInUse();
    std::vector<Probe*> again;
    for (unsigned k = 0; k < freeSlots; ++k)
    {
        again.push_back(new Probe(k));
        EXPECT_TRUE(Probe::isLocal(again.back()));
    }
    again.push_back(new Probe(1)); // class pool full again: global pool
    EXPECT_TRUE(inGlobalPool(again.back()));

    for (size_t k = half; k < all.size(); ++k)
    {
        ASSERT_TRUE(all[k]->intact());
        delete all[k];
    }
    for (Probe* p : again)
        delete p;
    EXPECT_EQ(Probe::localInUse(), 0u);
    for (void* p : full)
        Pool::deallocate(p);
    EXPECT_TRUE(isPristine(snapshot()));
}

// Two threads allocate and free at once, through the global pool (raw blocks
// and pooled objects) and a small class pool that keeps overflowing into the
// global pool. Every block carries its owner's pattern, checked before it is
// freed; the pool's lists are checked while the threads run and afterwards.
TEST_F(LocalPool, TwoThreadsAllocateAndFreeConcurrently)
{
    unsigned const Steps = 200000;
    std::atomic<unsigned> failures(0);
    std::atomic<unsigned> checks(0);
    std::atomic<unsigned> ready(0);

    auto worker = [&](unsigned id)
    {
        std::mt19937 random(100 + id);
        // Start together, so that the two threads really overlap.
        ++ready;
        while (ready.load() < 2)
            std::this_thread::yield();
        struct Raw
        {
            unsigned char* p;
            unsigned n;
            unsigned char fill;
            bool intact() const { return std::count(p, p + n, fill) == long(n); }
        };
        std::vector<Raw> raws;
        std::vector<Small*> smalls;
        std::vector<Global*> globals;
        std::vector<Probe*> probes;
        // Frees a random element of `list` after checking its content.
        auto release = [&](auto& list, auto intact, auto free)
        {
            if (list.empty())
                return;
            size_t k = random() % list.size();
            if (!intact(list[k]))
                ++failures;
            free(list[k]);
            list.erase(list.begin() + k);
        };
        auto del = [](auto* p) { delete p; };
        auto mine = [id](unsigned value, unsigned check)
        { return check == ~value && value >> 24 == id; };
        for (unsigned step = 0; step < Steps; ++step)
        {
            unsigned value = id << 24 | step;
            switch (random() % 8)
            {
            case 0:
            {
                unsigned n = random() % 300;
                unsigned char* p = static_cast<unsigned char*>(Pool::allocate(n));
                unsigned char fill = static_cast<unsigned char>(id * 16 + random() % 16 + 1);
                if (p != nullptr)
                    raws.push_back({static_cast<unsigned char*>(std::memset(p, fill, n)), n, fill});
                break;
            }
            case 1: smalls.push_back(new Small(value)); break;
            case 2: globals.push_back(new Global(value)); break;
            case 3: probes.push_back(new Probe(value)); break;
            case 4:
                release(raws, [](Raw const& r) { return r.intact(); },
                        [](Raw const& r) { Pool::deallocate(r.p); });
                break;
            case 5:
                release(smalls, [&](Small* s) { return mine(s->value, s->check); }, del);
                break;
            case 6:
                release(globals, [&](Global* g) { return mine(g->value, g->check) && g->d == 2.5; },
                        del);
                break;
            case 7:
                release(probes, [&](Probe* p) { return p->intact() && mine(p->value, p->check); },
                        del);
                break;
            }
            if (step % 5000 == 0)
            {
                failures += !Pool::isInvariant();
                ++checks;
            }
        }
        while (!raws.empty() || !smalls.empty() || !globals.empty() || !probes.empty())
        {
            release(raws, [](Raw const& r) { return r.intact(); },
                    [](Raw const& r) { Pool::deallocate(r.p); });
            release(smalls, [](Small*) { return true; }, del);
            release(globals, [](Global*) { return true; }, del);
            release(probes, [](Probe*) { return true; }, del);
        }
    };

    std::thread first(worker, 1);
    std::thread second(worker, 2);
    first.join();
    second.join();
    EXPECT_EQ(failures.load(), 0u);
    EXPECT_EQ(checks.load(), 2 * Steps / 5000);
    // TearDown: lists intact and everything returned.
}
