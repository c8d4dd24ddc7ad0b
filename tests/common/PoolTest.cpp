// The pools' fixed layout, class-level operators and locking; which block an
// allocation takes is PoolDecisions' concern.
#include "common/GlobalStaticAllocator.h"
#include "common/LocalStaticAllocator.h"
#include "tests/common/PoolTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace PoolTest;

namespace
{

typedef PoolFixture GlobalPool;

TEST_F(GlobalPool, TenSegmentsAreReservedOnceAndEveryByteMapsToItsSegment)
{
    char* base = Pool::getSegmentAddr(0);
    EXPECT_EQ(base + 9 * 65535, Pool::getSegmentAddr(9));
    EXPECT_TRUE(Pool::getSegmentAddr(10) == nullptr && Pool::getSegmentAddr(-1) == nullptr);
    unsigned long total = Common::LogTotalHeapMemory();
    EXPECT_GE(total, 655350u);
    Pool::Initialize(); // idempotent: no second block
    EXPECT_EQ(total, Common::LogTotalHeapMemory());

    long const cases[][2] = {{0, 0}, {65534, 0}, {65535, 1}, {655349, 9}, {655350, -1}, {-1, -1}};
    for (auto const& c : cases)
    {
        int i = 42;
        EXPECT_EQ(c[1] >= 0, Pool::getSegmentFrom(base + c[0], i)) << c[0];
        EXPECT_EQ(c[1] >= 0 ? c[1] : 42, i) << c[0];
    }
}

TEST_F(GlobalPool, ToXMLWritesNeverAByteBeyondTheSizeGiven)
{
    std::string const text = poolXml();
    unsigned const needed = Pool::toXMLSize();
    EXPECT_EQ(needed, text.size() + 1);
    for (unsigned size : {needed + 16, needed - 1, 13u, 1u, 0u})
    {
        std::vector<char> buffer(size + 32, '#');
        EXPECT_EQ(buffer.data(), Pool::ToXML(buffer.data(), size));
        EXPECT_EQ(std::string(buffer.size() - std::min(size, needed), '#'),
                  std::string(buffer.begin() + std::min(size, needed), buffer.end()))
            << size;
        EXPECT_TRUE(size == 0 || text.substr(0, size - 1) == buffer.data()) << size;
    }
}

struct Pooled : Common::GlobalStaticAllocator
{
    int number = 7;
    double value = 1.5;
};

struct HugePooled : Common::GlobalStaticAllocator
{
    char bytes[70000];
};

struct Throwing : Common::GlobalStaticAllocator
{
    Throwing() { throw std::runtime_error("constructor fails"); }
};

TEST_F(GlobalPool, PooledObjectsComeAlignedFromThePoolOrElseTheHeapAndGoBackThere)
{
    Common::GlobalStaticAllocator allocator;
    Pooled* one = new Pooled;
    Pooled* many = new Pooled[5];
    Pooled* placed = new (&allocator) Pooled[3];
    for (Pooled* p : {one, many, placed})
        EXPECT_TRUE(inPool(p) && p->number == 7 &&
                    reinterpret_cast<std::uintptr_t>(p) % __STDCPP_DEFAULT_NEW_ALIGNMENT__ == 0);
    EXPECT_EQ(1.5, many[4].value);
    EXPECT_THROW(new Throwing, std::runtime_error); // the memory goes back
    EXPECT_THROW(new (&allocator) Throwing[2], std::runtime_error);
    delete one;
    delete[] many;
    delete[] placed;

    HugePooled* huge = new HugePooled; // larger than any segment
    EXPECT_FALSE(inPool(huge));
    std::vector<void*> full = fillSegmentsAfter(0);
    Pooled* fromHeap = new Pooled;
    Pooled* arrayFromHeap = new Pooled[4];
    EXPECT_FALSE(inPool(fromHeap) || inPool(arrayFromHeap));
    Pool::deallocate(full.back()); // room again, while heap objects live
    full.pop_back();
    Pooled* pooled = new Pooled;
    EXPECT_TRUE(inPool(pooled));
    delete fromHeap; // to the heap: LeakSanitizer would report a miss
    delete[] arrayFromHeap;
    delete pooled;
    delete huge;
    freeAll(full);
}

// Carries a mark of its own address and value. Probe's pool of 200 slots is
// shaped like the XML elements'; Small's, of 16, the threads overflow all the time.
template <unsigned N> struct Marked : Common::LocalStaticAllocator<Marked<N>, N, 8>
{
    explicit Marked(unsigned v = 0) : value(v), self(this), check(~v) {}
    virtual ~Marked() {}
    bool intact() const { return self == this && check == ~value; }
    unsigned value;
    Marked const* self;
    unsigned check;
};
typedef Marked<200> Probe;
typedef Marked<16> Small;

struct BigProbe : Probe
{
    explicit BigProbe(unsigned v) : Probe(v) {}
    char more[64] = {};
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
        auto release = [&](auto& objects)
        {
            if (objects.empty())
                return;
            std::swap(objects[random() % objects.size()], objects.back());
            failures += !objects.back()->intact() || objects.back()->value >> 24 != id;
            delete objects.back();
            objects.pop_back();
        };
        for (unsigned step = 0; step < 400000; ++step)
        {
            unsigned value = id << 24 | step, action = random() % 4;
            if (action == 0)
                smalls.push_back(new Small(value));
            else if (action == 1)
                probes.push_back(new Probe(value));
            else
                action == 2 ? release(smalls) : release(probes);
            if (step % 5000 == 0)
                failures += !Pool::isInvariant();
        }
        while (!smalls.empty() || !probes.empty())
            release(smalls), release(probes);
    };
    std::thread first(worker, 1), second(worker, 2);
    first.join();
    second.join();
    EXPECT_EQ(0u, failures.load());
}

} // namespace
