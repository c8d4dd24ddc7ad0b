#pragma once

// Reading the global pool's state through its public getters.
//
// The global pool is process-wide state shared by every test of the binary.
// Every test gives back everything it takes, so each ends with the pool as it
// found it (the fixtures check that against a snapshot); tests that build an
// exact layout start from the pristine pool (one 65,535-byte node per segment).

#include "common/GlobalStaticAllocator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace PoolTest
{

typedef Common::GlobalStaticAllocator Pool;

struct FreeNode
{
    unsigned offset; // from the segment start
    unsigned size;
    bool operator==(FreeNode const& o) const { return offset == o.offset && size == o.size; }
};

// Free nodes of every segment, in list order.
typedef std::vector<std::vector<FreeNode>> Layout;

// Reads the layout, checking on the way that the nodes lie in increasing
// address order inside their segment, linked by their offsets, and counted.
inline Layout snapshot()
{
    Pool::Guard lock; // one consistent picture even while other threads run
    Layout layout(Pool::SegmentCount);
    for (int i = 0; i < Pool::SegmentCount; ++i)
    {
        std::uintptr_t const base = reinterpret_cast<std::uintptr_t>(Pool::getSegmentAddr(i));
        unsigned expectedNext = 0;
        for (Pool::FreeListNode* node = Pool::getFreeListHead(i); node != nullptr;
             node = Pool::getNextFreeListNode(node))
        {
            FreeNode n = {unsigned(reinterpret_cast<std::uintptr_t>(node) - base), node->size};
            if (!layout[i].empty())
                EXPECT_EQ(layout[i].back().offset + expectedNext, n.offset) << "segment " << i;
            EXPECT_LE(n.offset + n.size, unsigned(Pool::SegmentSize));
            expectedNext = node->nextOffset;
            layout[i].push_back(n);
            if (layout[i].size() > 20000)
            {
                ADD_FAILURE() << "free list of segment " << i << " does not end";
                break;
            }
        }
        EXPECT_EQ(0u, expectedNext) << "segment " << i << ": last node";
        EXPECT_EQ(Pool::getFreeListCount(i), layout[i].size()) << "segment " << i;
    }
    return layout;
}

inline bool isPristine(Layout const& layout)
{
    for (auto const& segment : layout)
        if (!(segment == std::vector<FreeNode>{{0, 65535}}))
            return false;
    return true;
}

inline bool inPool(void const* p)
{
    int i;
    return Pool::getSegmentFrom(p, i);
}

// Every test leaves the pool as it found it.
class PoolFixture : public ::testing::Test
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
        EXPECT_TRUE(snapshot() == m_before) << "the test did not give back all it took";
    }

    // Takes every segment whole, gives back the first `free` of them.
    std::vector<void*> fillSegmentsAfter(int free)
    {
        EXPECT_TRUE(isPristine(m_before)) << "an earlier test left blocks in the pool";
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

    Layout m_before;
};

} // namespace PoolTest
