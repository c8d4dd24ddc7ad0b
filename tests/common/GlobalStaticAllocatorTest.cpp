#include "common/GlobalStaticAllocator.h"
#include "tests/common/PoolTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

using namespace PoolTest;

namespace
{

bool inPool(void const* p)
{
    int i;
    return Pool::getSegmentFrom(p, i);
}

int segmentOf(void const* p)
{
    int i = -1;
    EXPECT_TRUE(Pool::getSegmentFrom(p, i));
    return i;
}

bool allZero(void const* p, unsigned n)
{
    unsigned char const* b = static_cast<unsigned char const*>(p);
    for (unsigned k = 0; k < n; ++k)
        if (b[k] != 0)
            return false;
    return true;
}

// Every test leaves the pool as it found it.
class GlobalPool : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Pool::Initialize();
        m_before = snapshot();
    }
    void TearDown() override
    {
        EXPECT_TRUE(Pool::isInvariant());
        EXPECT_EQ(snapshot(), m_before) << "the test did not give back all it took";
    }

    Layout m_before;
};

// Tests that build an exact layout: they start from the pristine pool, which
// the rule above guarantees.
class PristinePool : public GlobalPool
{
protected:
    void SetUp() override
    {
        GlobalPool::SetUp();
        ASSERT_TRUE(isPristine(m_before)) << "an earlier test left blocks in the pool";
    }

    std::vector<void*> m_released;

    // Fills segments first..9 completely (65,533 bytes each).
    std::vector<void*> fillSegments(int first)
    {
        // Whole-segment requests go to the lowest free segment: take them
        // all, then give back those before `first`.
        std::vector<void*> blocks;
        for (int i = 0; i < Pool::SegmentCount; ++i)
        {
            void* p = Pool::allocate(65533);
            EXPECT_NE(p, nullptr);
            EXPECT_EQ(segmentOf(p), i);
            if (i < first)
                m_released.push_back(p);
            else
                blocks.push_back(p);
        }
        freeAll(m_released);
        m_released.clear();
        return blocks;
    }

    static void freeAll(std::vector<void*> const& blocks)
    {
        for (void* p : blocks)
            Pool::deallocate(p);
    }
};

} // namespace

TEST_F(GlobalPool, TenSegmentsReservedOnceAndEveryByteMapsToItsSegment)
{
    char* base = Pool::getSegmentAddr(0);
    ASSERT_NE(base, nullptr);
    EXPECT_EQ(Pool::getSegmentAddr(9), base + 9 * 65535);
    EXPECT_EQ(Pool::getSegmentAddr(-1), nullptr);
    EXPECT_EQ(Pool::getSegmentAddr(10), nullptr);

    unsigned long total = Common::LogTotalHeapMemory();
    EXPECT_GE(total, 655350u);
    Pool::Initialize(); // idempotent: no second block
    EXPECT_EQ(Common::LogTotalHeapMemory(), total);
    EXPECT_EQ(Pool::getSegmentAddr(0), base);

    struct { long offset; int segment; } const cases[] = {
        {0, 0}, {65534, 0}, {65535, 1}, {655349, 9}, {655350, -1}, {-1, -1}};
    for (auto const& c : cases)
    {
        int i = 42;
        EXPECT_EQ(Pool::getSegmentFrom(base + c.offset, i), c.segment >= 0) << c.offset;
        EXPECT_EQ(i, c.segment >= 0 ? c.segment : 42) << c.offset;
    }
}

TEST_F(PristinePool, Request65533TakesAWholeSegmentAndLargerOnesFail)
{
    void* p = Pool::allocate(65533);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(static_cast<char*>(p), Pool::getSegmentAddr(0) + 2);
    EXPECT_EQ(headerOf(p), 65533);
    EXPECT_EQ(Pool::getFreeListHead(0), nullptr);
    EXPECT_EQ(Pool::getFreeListCount(0), 0u);
    EXPECT_EQ(Pool::getFreeSpace(0), 0u);
    EXPECT_TRUE(allZero(p, 65533));
    EXPECT_TRUE(Pool::isInvariant());

    // The next one goes to the next segment: the full one is visited first
    // (fewest nodes) but has nothing.
    void* q = Pool::allocate(65533);
    ASSERT_NE(q, nullptr);
    EXPECT_EQ(static_cast<char*>(q), Pool::getSegmentAddr(1) + 2);

    Pool::deallocate(p);
    Pool::deallocate(q);
    EXPECT_TRUE(isPristine(snapshot()));

    for (unsigned n : {65534u, 65535u, 100000u, 0x7FFFFFFFu, 0xFFFFFFFFu})
        EXPECT_EQ(Pool::allocate(n), nullptr) << "n = " << n;
}

TEST_F(PristinePool, AFullPoolReturnsNull)
{
    std::vector<void*> blocks = fillSegments(0);
    for (int i = 0; i < Pool::SegmentCount; ++i)
        EXPECT_EQ(Pool::getFreeListCount(i), 0u);
    EXPECT_EQ(Pool::allocate(0), nullptr);
    freeAll(blocks);
}

TEST_F(PristinePool, ANodeLargerByOneToThreeBytesIsSkipped)
{
    std::vector<void*> full = fillSegments(1); // only segment 0 has room
    char* s0 = Pool::getSegmentAddr(0);
    char* a = static_cast<char*>(Pool::allocate(100)); // 102 bytes at 0
    char* sep = static_cast<char*>(Pool::allocate(2)); // 4 bytes at 102
    ASSERT_EQ(a, s0 + 2);
    ASSERT_EQ(sep, s0 + 104);
    Pool::deallocate(a);
    std::vector<FreeNode> const layout = {{0, 102}, {106, 65535 - 106}};
    ASSERT_EQ(snapshot()[0], layout);

    // need 99, 100, 101: the 102-byte node would leave 1-3 bytes: skipped.
    for (unsigned n : {97u, 98u, 99u})
    {
        char* p = static_cast<char*>(Pool::allocate(n));
        EXPECT_EQ(p, s0 + 106 + 2) << "n = " << n;
        Pool::deallocate(p);
        EXPECT_EQ(snapshot()[0], layout);
    }
    // need 102: exact fit, the node is unlinked.
    char* exact = static_cast<char*>(Pool::allocate(100));
    EXPECT_EQ(exact, s0 + 2);
    EXPECT_EQ(snapshot()[0], (std::vector<FreeNode>{{106, 65535 - 106}}));
    Pool::deallocate(exact);
    // need 98: split, leaving a 4-byte node; a 2-byte request then fits it exactly.
    char* split = static_cast<char*>(Pool::allocate(96));
    EXPECT_EQ(split, s0 + 2);
    EXPECT_EQ(snapshot()[0], (std::vector<FreeNode>{{98, 4}, {106, 65535 - 106}}));
    char* tiny = static_cast<char*>(Pool::allocate(2));
    EXPECT_EQ(tiny, s0 + 98 + 2);
    EXPECT_EQ(snapshot()[0], (std::vector<FreeNode>{{106, 65535 - 106}}));

    Pool::deallocate(tiny);
    Pool::deallocate(split);
    Pool::deallocate(sep);
    freeAll(full);
}

TEST_F(GlobalPool, DeallocateZeroesTheBlockAndIgnoresPointersOutsideTheSegmentsAndFreeMemory)
{
    int local = 0;
    EXPECT_EQ(Pool::Coalesce(nullptr), 0);
    Pool::deallocate(nullptr);
    Pool::deallocate(&local);
    int* heap = new int(5);
    Pool::deallocate(heap);
    delete heap;
    Pool::deallocate(Pool::getSegmentAddr(0) + Pool::PoolSize + 2); // just past the pool
    EXPECT_EQ(snapshot(), m_before);

    // A second free of the same block lies in free memory: ignored.
    void* p = Pool::allocate(40);
    ASSERT_NE(p, nullptr);
    std::memset(p, 0xAB, 40);
    Pool::deallocate(p);
    // Freed memory is zeroed past the free node's 4 bytes.
    EXPECT_TRUE(allZero(static_cast<char*>(p) + 2, 38));
    Layout after = snapshot();
    Pool::deallocate(p);
    EXPECT_EQ(snapshot(), after);
}

// A randomized sequence of allocations and frees, checked after every step
// against the reference model and the pool's invariants.
TEST_F(GlobalPool, RandomSequenceMatchesTheModel)
{
    struct Live
    {
        unsigned char* p;
        unsigned n;
        int segment;
        unsigned offset;
        unsigned char fill;
    };

    // Bytes of each segment held by blocks this test did not take.
    std::vector<unsigned> foreign(Pool::SegmentCount);
    for (int i = 0; i < Pool::SegmentCount; ++i)
        foreign[i] = 65535 - freeBytes(m_before[i]);

    for (unsigned seed : {1u, 2u, 3u})
    {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Model model(snapshot());
        std::vector<Live> live;
        unsigned nulls = 0;
        for (int step = 0; step < 4000; ++step)
        {
            bool doAllocate = live.empty() || random() % 100 < 55;
            if (doAllocate)
            {
                unsigned n;
                unsigned kind = random() % 100;
                if (kind < 50)
                    n = random() % 17; // tiny, including 0 and 1
                else if (kind < 85)
                    n = random() % 600;
                else if (kind < 97)
                    n = random() % 12000;
                else if (kind < 99)
                    n = 65533 - random() % 8; // whole or nearly whole segment
                else
                    n = 65534 + random() % 4; // never fits
                auto where = model.predict(n);
                void* p = Pool::allocate(n);
                if (where.first < 0)
                {
                    ASSERT_EQ(p, nullptr) << "step " << step << ", n = " << n;
                    ++nulls;
                }
                else
                {
                    ASSERT_NE(p, nullptr) << "step " << step << ", n = " << n;
                    ASSERT_EQ(segmentOf(p), where.first) << "step " << step;
                    ASSERT_EQ(offsetIn(where.first, p), where.second + 2) << "step " << step;
                    ASSERT_EQ(headerOf(p), needFor(n) - 2);
                    ASSERT_TRUE(allZero(p, n));
                    model.allocated(where.first, where.second, n);
                    Live l = {static_cast<unsigned char*>(p), n, where.first, where.second,
                              static_cast<unsigned char>(1 + random() % 255)};
                    std::memset(l.p, l.fill, n);
                    live.push_back(l);
                }
            }
            else
            {
                size_t k = random() % live.size();
                Live l = live[k];
                live.erase(live.begin() + k);
                for (unsigned b = 0; b < l.n; ++b)
                    ASSERT_EQ(l.p[b], l.fill) << "block overwritten at step " << step;
                ASSERT_EQ(headerOf(l.p), needFor(l.n) - 2);
                Pool::deallocate(l.p);
                model.freed(l.segment, l.offset, l.n);
            }

            Layout now = snapshot();
            ASSERT_EQ(now, model.layout()) << "step " << step;
            ASSERT_TRUE(Pool::isInvariant()) << "step " << step;
            std::vector<unsigned> allocated(Pool::SegmentCount);
            for (auto const& l : live)
                allocated[l.segment] += needFor(l.n);
            for (int i = 0; i < Pool::SegmentCount; ++i)
                ASSERT_EQ(freeBytes(now[i]) + allocated[i] + foreign[i], 65535u)
                    << "segment " << i << ", step " << step;
        }
        EXPECT_GT(nulls, 0u);
        for (auto const& l : live)
            Pool::deallocate(l.p);
        EXPECT_EQ(snapshot(), m_before);
    }
}

TEST_F(PristinePool, ToXMLWritesEverySegmentWithinTheSizeGiven)
{
    void* p = Pool::allocate(10); // segment 0: one node of 65,523 bytes at 12
    char expected[8192];
    std::string text = "<MemoryPool>";
    auto element = [&](char const* name, unsigned value)
    {
        std::snprintf(expected, sizeof expected, "<%s>0x%x</%s>", name, value, name);
        text += expected;
    };
    element("Address",
            static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(Pool::getSegmentAddr(0))));
    for (int i = 0; i < 10; ++i)
    {
        text += "<Segment>";
        element("Index", i);
        element("Address",
                static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(Pool::getSegmentAddr(i))));
        element("FreeListCount", 1);
        text += "<FreeListNode>";
        element("Size", i == 0 ? 65523 : 65535);
        element("NextOffset", 0);
        text += "</FreeListNode>";
        element("FreeSpace", i == 0 ? 65523 : 65535);
        text += "</Segment>";
    }
    text += "</MemoryPool>";
    EXPECT_EQ(Pool::toXMLSize(), text.size() + 1);

    // Exactly large enough, and shorter: never a byte past the size given.
    unsigned needed = text.size() + 1;
    for (unsigned size : {needed + 16, needed, needed - 1, 100u, 13u, 1u, 0u})
    {
        std::vector<char> buffer(size + 32, '#');
        EXPECT_EQ(Pool::ToXML(buffer.data(), size), buffer.data());
        for (unsigned k = std::min(size, needed); k < buffer.size(); ++k)
            ASSERT_EQ(buffer[k], '#') << "wrote past " << size << " bytes";
        if (size > 0)
            EXPECT_EQ(std::string(buffer.data()), text.substr(0, size - 1)) << "size " << size;
    }
    Pool::deallocate(p);
}

// ---- class-level operators ----

namespace
{

struct Pooled : Common::GlobalStaticAllocator
{
    Pooled() : number(7), pointer(&number), value(1.5) {}
    int number;
    int* pointer;
    double value;
    char text[20] = "pooled";
};

struct HugePooled : Common::GlobalStaticAllocator
{
    char bytes[70000];
};

struct Throwing : Common::GlobalStaticAllocator
{
    Throwing() { throw std::runtime_error("constructor fails"); }
    int x = 0;
};

} // namespace

TEST_F(GlobalPool, PooledObjectsComeFromThePoolAlignedAndGoBack)
{
    Pooled* a = new Pooled;
    EXPECT_TRUE(inPool(a));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(a) % __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0u);
    EXPECT_EQ(a->number, 7);
    EXPECT_EQ(*a->pointer, 7);
    EXPECT_STREQ(a->text, "pooled");

    Pooled* many = new Pooled[5];
    EXPECT_TRUE(inPool(many));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(many) % __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0u);
    for (int k = 0; k < 5; ++k)
        EXPECT_EQ(many[k].value, 1.5);

    Common::GlobalStaticAllocator allocator;
    Pooled* placed = new (&allocator) Pooled;
    EXPECT_TRUE(inPool(placed));
    Pooled* placedMany = new (&allocator) Pooled[3];
    EXPECT_TRUE(inPool(placedMany));

    delete a;
    delete[] many;
    delete placed;
    delete[] placedMany;
    // TearDown: the pool is as before.
}

TEST_F(GlobalPool, AThrowingConstructorGivesTheMemoryBack)
{
    EXPECT_THROW(new Throwing, std::runtime_error);
    Common::GlobalStaticAllocator allocator;
    EXPECT_THROW(new (&allocator) Throwing, std::runtime_error);
    EXPECT_THROW(new Throwing[2], std::runtime_error);
}

TEST_F(PristinePool, WithoutRoomPooledObjectsComeFromTheHeapAndGoBackThere)
{
    HugePooled* huge = new HugePooled; // larger than any segment
    EXPECT_FALSE(inPool(huge));
    huge->bytes[69999] = 1;

    std::vector<void*> full = fillSegments(0);
    std::vector<Pooled*> fromHeap;
    for (int k = 0; k < 20; ++k)
    {
        Pooled* p = new Pooled;
        EXPECT_FALSE(inPool(p));
        fromHeap.push_back(p);
    }
    Pooled* array = new Pooled[4];
    EXPECT_FALSE(inPool(array));

    // Room again: one pooled object while heap ones are still alive.
    Pool::deallocate(full.back());
    full.pop_back();
    Pooled* pooled = new Pooled;
    EXPECT_TRUE(inPool(pooled));

    for (Pooled* p : fromHeap)
        delete p; // to the heap (LeakSanitizer would report a miss)
    delete[] array;
    delete pooled;
    delete huge;
    freeAll(full);
}
