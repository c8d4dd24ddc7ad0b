#pragma once

// The pool is shared by every test of the binary: each gives back all it takes
// (PoolFixture checks); the pristine pool has one free node per segment.

#include "common/GlobalStaticAllocator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace PoolTest
{

typedef Common::GlobalStaticAllocator Pool;

// Every segment's free nodes (size and distance to the next) as ToXML gives them.
inline std::string poolXml()
{
    std::vector<char> buffer(Pool::toXMLSize());
    return Pool::ToXML(buffer.data(), buffer.size());
}

inline bool isPristine()
{
    for (int i = 0; i < Pool::SegmentCount; ++i)
        if (Pool::getFreeListCount(i) != 1 || Pool::getFreeSpace(i) != 65535)
            return false;
    return true;
}

inline bool inPool(void const* p)
{
    int i;
    return Pool::getSegmentFrom(p, i);
}

class PoolFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        Pool::Initialize();
        m_before = poolXml();
    }
    void TearDown() override
    {
        EXPECT_TRUE(Pool::isInvariant());
        EXPECT_TRUE(poolXml() == m_before) << "the test did not give back all it took";
    }

    // Takes every segment whole, gives back the first `free` of them.
    std::vector<void*> fillSegmentsAfter(int free)
    {
        EXPECT_TRUE(isPristine()) << "an earlier test left blocks in the pool";
        std::vector<void*> blocks;
        for (int i = 0; i < Pool::SegmentCount; ++i)
            blocks.push_back(Pool::allocate(65533));
        for (int i = 0; i < free; ++i)
            Pool::deallocate(blocks[i]);
        return std::vector<void*>(blocks.begin() + free, blocks.end());
    }

    static void freeAll(std::vector<void*> const& blocks)
    {
        for (void* p : blocks)
            Pool::deallocate(p);
    }

    std::string m_before;
};

} // namespace PoolTest
