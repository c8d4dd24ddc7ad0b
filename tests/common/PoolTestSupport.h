#pragma once

// Helpers shared by the pool tests: reading the global pool's state through its
// public getters, and a reference model of its allocation rules.
//
// The global pool is process-wide state shared by every test of the binary.
// Every test gives back everything it takes, so each ends with the pool as it
// found it (PoolTest's TearDown checks that against a snapshot). Tests that
// build an exact layout start from the pristine pool (one 65,535-byte node per
// segment), which that rule guarantees.

#include "common/GlobalStaticAllocator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace PoolTest
{

typedef Common::GlobalStaticAllocator Pool;

struct FreeNode
{
    unsigned offset; // from the segment start
    unsigned size;
    unsigned next = 0; // nextOffset as read (not compared: implied by the offsets)

    bool operator==(FreeNode const& o) const { return offset == o.offset && size == o.size; }
};

// Free nodes of every segment, in list order, as offsets from the segment start.
typedef std::vector<std::vector<FreeNode>> Layout;

inline unsigned offsetIn(int segment, void const* p)
{
    return static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(p) -
                                 reinterpret_cast<std::uintptr_t>(Pool::getSegmentAddr(segment)));
}

// Reads the layout with the getters, checking the invariants on the way:
// nodes in increasing address order, positive offsets, count == nodes.
inline Layout snapshot()
{
    Pool::Guard lock; // one consistent picture even while other threads run
    Layout layout(Pool::SegmentCount);
    for (int i = 0; i < Pool::SegmentCount; ++i)
    {
        unsigned count = 0;
        for (Pool::FreeListNode* node = Pool::getFreeListHead(i); node != nullptr;
             node = Pool::getNextFreeListNode(node))
        {
            FreeNode n = {offsetIn(i, node), node->size, node->nextOffset};
            if (!layout[i].empty())
            {
                EXPECT_GT(n.offset, layout[i].back().offset) << "segment " << i;
                EXPECT_EQ(n.offset - layout[i].back().offset, layout[i].back().next)
                    << "segment " << i;
            }
            EXPECT_LE(n.offset + n.size, unsigned(Pool::SegmentSize));
            layout[i].push_back(n);
            if (++count > 20000)
            {
                ADD_FAILURE() << "free list of segment " << i << " does not end";
                break;
            }
        }
        if (!layout[i].empty())
        {
            EXPECT_EQ(layout[i].back().next, 0u) << "segment " << i << ": last node";
        }
        EXPECT_EQ(Pool::getFreeListCount(i), layout[i].size()) << "segment " << i;
        EXPECT_EQ(Pool::getFreeListHead(i) == nullptr, layout[i].empty());
    }
    return layout;
}

inline bool isPristine(Layout const& layout)
{
    for (auto const& segment : layout)
        if (segment.size() != 1 || segment[0].offset != 0 || segment[0].size != 65535)
            return false;
    return true;
}

inline unsigned freeBytes(std::vector<FreeNode> const& segment)
{
    unsigned total = 0;
    for (auto const& n : segment)
        total += n.size;
    return total;
}

inline unsigned short headerOf(void const* p)
{
    unsigned short header;
    std::memcpy(&header, static_cast<char const*>(p) - 2, sizeof header);
    return header;
}

inline unsigned needFor(unsigned n)
{
    return n < 2 ? 4 : n + 2;
}

// The pool's allocation rules on a plain list of free intervals, kept
// fully coalesced. Predicts where the next allocation lands.
class Model
{
public:
    explicit Model(Layout const& start) : m_free(start) {}

    // Predicted (segment, offset of the block) for n bytes, or (-1, 0).
    std::pair<int, unsigned> predict(unsigned n) const
    {
        if (n > 65533)
            return {-1, 0};
        unsigned need = needFor(n);
        std::vector<int> order;
        for (int i = 0; i < Pool::SegmentCount; ++i)
            order.push_back(i);
        // stable: fewest nodes first, lower index first among equals
        for (size_t a = 1; a < order.size(); ++a)
            for (size_t b = a; b > 0 && m_free[order[b - 1]].size() > m_free[order[b]].size(); --b)
                std::swap(order[b - 1], order[b]);
        for (int i : order)
            for (auto const& n : m_free[i])
                if (n.size == need || n.size >= need + 4)
                    return {i, n.offset};
        return {-1, 0};
    }

    void allocated(int segment, unsigned offset, unsigned n)
    {
        unsigned need = needFor(n);
        auto& list = m_free[segment];
        for (size_t k = 0; k < list.size(); ++k)
            if (list[k].offset == offset)
            {
                if (list[k].size == need)
                    list.erase(list.begin() + k);
                else
                {
                    list[k].offset += need;
                    list[k].size -= need;
                }
                return;
            }
        ADD_FAILURE() << "model: no free node at " << offset;
    }

    void freed(int segment, unsigned offset, unsigned n)
    {
        unsigned length = needFor(n);
        auto& list = m_free[segment];
        size_t k = 0;
        while (k < list.size() && list[k].offset < offset)
            ++k;
        list.insert(list.begin() + k, FreeNode{offset, length, 0});
        if (k + 1 < list.size() && list[k].offset + list[k].size == list[k + 1].offset)
        {
            list[k].size += list[k + 1].size;
            list.erase(list.begin() + k + 1);
        }
        if (k > 0 && list[k - 1].offset + list[k - 1].size == list[k].offset)
        {
            list[k - 1].size += list[k].size;
            list.erase(list.begin() + k);
        }
    }

    Layout const& layout() const { return m_free; }

private:
    Layout m_free;
};

} // namespace PoolTest
