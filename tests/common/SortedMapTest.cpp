// Common::sorted_map, the XML attributes' container (keys that differ only
// after a NUL byte are the attribute tests' concern): key order, replacement,
// erase, copies, the return of every node to its allocator, and the balance
// that keeps lookups logarithmic.
#include "common/SortedMap.h"
#include "CountingAllocator.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

namespace
{
typedef Common::sorted_map<int, int> IntMap;
typedef std::vector<std::pair<int, int>> Entries;

template <class Map> Entries entriesOf(Map const& m)
{
    Entries entries;
    for (auto it = m.begin(); it != m.end(); ++it)
        entries.emplace_back(it->first, it->second);
    return entries;
}

TEST(SortedMap, KeepsKeysAscendingReplacesValuesAndErasesWithoutMovingOthers)
{
    IntMap m;
    for (int key : {5, 1, 9, 3, 7, 2, 8, 4, 6, 0})
        EXPECT_TRUE(m.insert(IntMap::value_type(key, -key)).second);
    auto again = m.insert(IntMap::value_type(2, 21));
    EXPECT_FALSE(again.second);
    EXPECT_TRUE(again.first == m.find(2));
    IntMap::const_iterator five = m.find(5);
    for (int key : {0, 9, 3, 7, 1, 8}) // leaves, inner nodes and the root
        EXPECT_EQ(1u, m.erase(key)) << key;
    EXPECT_EQ(0u, m.erase(7));
    EXPECT_EQ((Entries{{2, 21}, {4, -4}, {5, -5}, {6, -6}}), entriesOf(m));
    EXPECT_EQ(5, five->first);
    EXPECT_EQ(6, (++five)->first);
    EXPECT_TRUE(m.find(10) == m.end());
}

// Also copies and swaps: the parser hands the attributes it read to the root by a swap.
TEST(SortedMap, CopiesAndSwapsKeepTheirOwnNodesAndEveryNodeGoesBackToItsAllocator)
{
    typedef Common::sorted_map<int, int, Common::LessThanPredicate<int>, CountingAllocator> Map;
    {
        Map original, small;
        for (int i = 0; i < 1000; ++i)
            original.insert(Map::value_type(i * 7919 % 1000, i));
        Entries const before = entriesOf(original);
        Map copy(original);
        copy.erase(3);
        EXPECT_EQ(before, entriesOf(original));
        small.insert(Map::value_type(-5, 0));
        Map::const_iterator fifteen = copy.find(15);
        small.swap(copy);
        EXPECT_EQ((Entries{{-5, 0}}), entriesOf(copy));
        EXPECT_TRUE(fifteen == small.find(15));
        EXPECT_EQ(1000 + 999 + 1, CountingAllocator::live);
        copy = original;
        original.clear();
        EXPECT_EQ(1000 + 999, CountingAllocator::live);
        EXPECT_EQ(before, entriesOf(copy));
    }
    EXPECT_EQ(0, CountingAllocator::live);
}

struct CountingLess
{
    static unsigned calls;
    bool operator()(int a, int b) const
    {
        ++calls;
        return a < b;
    }
};
unsigned CountingLess::calls = 0;

TEST(SortedMap, KeysArrivingInOrderStillGiveLogarithmicLookups)
{
    typedef Common::sorted_map<int, int, CountingLess> CountedMap;
    int const n = 1 << 16;
    // An AVL tree of n keys is less than 1.4405 log2(n + 2) levels deep; a
    // lookup or insert compares once per level and once more.
    auto bound = [](unsigned size) { return unsigned(1.4405 * std::log2(size + 2.0)) + 1; };
    CountedMap m;
    for (int key = 0; key < n; ++key)
        m.insert(CountedMap::value_type(key, key));
    for (int key = 0; key < n; key += 3)
        m.erase(key);
    CountedMap copy(m);
    unsigned worst = 0;
    for (int key = 0; key < n; ++key)
    {
        CountingLess::calls = 0;
        EXPECT_EQ(key % 3 != 0, copy.find(key) != copy.end());
        worst = std::max(worst, CountingLess::calls);
    }
    EXPECT_LE(worst, bound(copy.size()));
    worst = 0;
    for (int key = -1; key >= -n; --key)
    {
        CountingLess::calls = 0;
        copy.insert(CountedMap::value_type(key, key));
        worst = std::max(worst, CountingLess::calls);
    }
    EXPECT_LE(worst, bound(copy.size()));
}

} // namespace
