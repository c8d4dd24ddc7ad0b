// The global pool's fixed layout and its class-level operators; which block
// an allocation takes is PoolDecisions' concern.
#include "common/GlobalStaticAllocator.h"
#include "tests/common/PoolTestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

using namespace PoolTest;

namespace
{

typedef PoolFixture GlobalPool;

TEST_F(GlobalPool, TenSegmentsAreReservedOnceAndEveryByteMapsToItsSegment)
{
    char* base = Pool::getSegmentAddr(0);
    EXPECT_EQ(base + 9 * 65535, Pool::getSegmentAddr(9));
    EXPECT_EQ(nullptr, Pool::getSegmentAddr(10));
    EXPECT_EQ(nullptr, Pool::getSegmentAddr(-1));
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
        if (size > 0)
            EXPECT_EQ(text.substr(0, size - 1), std::string(buffer.data())) << size;
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

} // namespace
