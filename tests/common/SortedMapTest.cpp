// Common::sorted_map: key order, replacement of an existing key's value,
// erase, copies, the return of every node to the allocator, and the balance
// that keeps lookups logarithmic; StringLess as its key order for strings.
#include "common/SortedMap.h"
#include "CountingAllocator.h"
#include "common/String.h"
#include "common/StringLess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <stdexcept>
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

Entries entriesOf(std::map<int, int> const& m)
{
    return Entries(m.begin(), m.end());
}

IntMap::value_type entry(int key, int value)
{
    return IntMap::value_type(key, value);
}

TEST(SortedMap, IteratesInAscendingKeyOrderWhateverTheInsertionOrder)
{
    IntMap m;
    EXPECT_TRUE(m.empty());
    EXPECT_TRUE(m.begin() == m.end());
    for (int key : {5, 1, 9, 3, 7, 2, 8, 4, 6})
        EXPECT_TRUE(m.insert(entry(key, key * 10)).second);
    EXPECT_EQ(
        (Entries{{1, 10}, {2, 20}, {3, 30}, {4, 40}, {5, 50}, {6, 60}, {7, 70}, {8, 80}, {9, 90}}),
        entriesOf(m));
    EXPECT_EQ(9u, m.size());
    EXPECT_FALSE(m.empty());
    EXPECT_EQ(30, m.find(3)->second);
    EXPECT_TRUE(m.find(10) == m.end());
}

TEST(SortedMap, InsertingAnExistingKeyReplacesItsValueInPlace)
{
    IntMap m;
    m.insert(entry(1, 10));
    IntMap::iterator two = m.insert(entry(2, 20)).first;
    m.insert(entry(3, 30));
    Common::pair<IntMap::iterator, bool> again = m.insert(entry(2, 21));
    EXPECT_FALSE(again.second);
    EXPECT_TRUE(again.first == two);
    EXPECT_EQ((Entries{{1, 10}, {2, 21}, {3, 30}}), entriesOf(m));
    EXPECT_EQ(3u, m.size());
}

TEST(SortedMap, EraseRemovesOneKeyAndLeavesIteratorsToTheOthersValid)
{
    IntMap m;
    for (int key = 0; key < 100; ++key)
        m.insert(entry(key, -key));
    IntMap::const_iterator fifty = m.find(50);
    // Leaves, inner nodes and the root go; 50 stays where it is.
    for (int key = 0; key < 100; ++key)
    {
        if (key % 10 != 0)
        {
            EXPECT_EQ(1u, m.erase(key)) << key;
        }
    }
    EXPECT_EQ(0u, m.erase(7));
    EXPECT_EQ(0u, m.erase(1000));
    Entries tens;
    for (int key = 0; key < 100; key += 10)
        tens.emplace_back(key, -key);
    EXPECT_EQ(tens, entriesOf(m));
    EXPECT_EQ(10u, m.size());
    EXPECT_EQ(50, fifty->first);
    ++fifty;
    EXPECT_EQ(60, fifty->first);

    for (int key = 0; key < 100; key += 10)
        EXPECT_EQ(1u, m.erase(key));
    EXPECT_TRUE(m.empty());
    EXPECT_TRUE(m.begin() == m.end());
}

TEST(SortedMap, ManyRandomInsertsAndErasesMatchAReferenceMap)
{
    std::mt19937 random(20240611);
    IntMap m;
    std::map<int, int> reference;
    for (int step = 0; step < 40000; ++step)
    {
        int key = static_cast<int>(random() % 3000);
        if (random() % 3 == 0)
        {
            ASSERT_EQ(reference.erase(key), m.erase(key)) << "step " << step;
        }
        else
        {
            ASSERT_EQ(reference.insert_or_assign(key, step).second,
                      m.insert(entry(key, step)).second)
                << "step " << step;
        }
        if (step % 1000 == 999)
        {
            ASSERT_EQ(entriesOf(reference), entriesOf(m)) << "step " << step;
            ASSERT_EQ(reference.size(), m.size());
        }
    }
    // Then down to nothing, in random order.
    std::vector<int> keys;
    for (auto const& e : reference)
        keys.push_back(e.first);
    std::shuffle(keys.begin(), keys.end(), random);
    for (size_t i = 0; i < keys.size(); ++i)
    {
        reference.erase(keys[i]);
        ASSERT_EQ(1u, m.erase(keys[i]));
        if (i % 100 == 0)
        {
            ASSERT_EQ(entriesOf(reference), entriesOf(m)) << "erased " << i;
        }
    }
    EXPECT_TRUE(m.empty());
    EXPECT_TRUE(m.begin() == m.end());
}

TEST(SortedMap, CopiesAreIndependentAndAssignmentReplacesTheWholeContent)
{
    IntMap original;
    for (int i = 0; i < 1000; ++i)
        original.insert(entry(i * 7919 % 1000, i));
    const Entries before = entriesOf(original);

    IntMap copy(original);
    EXPECT_EQ(before, entriesOf(copy));
    EXPECT_EQ(1000u, copy.size());
    copy.insert(entry(5000, 1));
    copy.insert(entry(4, -4));
    copy.erase(3);
    EXPECT_EQ(before, entriesOf(original));
    EXPECT_EQ(-4, copy.find(4)->second);
    EXPECT_TRUE(copy.find(3) == copy.end());

    IntMap assigned;
    assigned.insert(entry(-1, -1));
    assigned = copy;
    EXPECT_EQ(entriesOf(copy), entriesOf(assigned));
    IntMap& same = assigned;
    assigned = same;
    EXPECT_EQ(entriesOf(copy), entriesOf(assigned));
    assigned = IntMap();
    EXPECT_TRUE(assigned.empty());
    EXPECT_TRUE(IntMap(assigned).empty());
}

TEST(SortedMap, SwapExchangesTheContentsAndIteratorsFollowTheirEntries)
{
    IntMap small;
    small.insert(entry(1, 1));
    IntMap large;
    for (int key = 10; key < 20; ++key)
        large.insert(entry(key, key));
    IntMap::const_iterator fifteen = large.find(15);
    small.swap(large);
    EXPECT_EQ((Entries{{1, 1}}), entriesOf(large));
    EXPECT_EQ(10u, small.size());
    EXPECT_EQ(1u, large.size());
    EXPECT_TRUE(fifteen == small.find(15));
    small.insert(entry(0, 0));
    EXPECT_EQ(0, small.begin()->first);
}

// A value whose copy fails once `copiesLeft` reaches 0.
struct Fragile
{
    static int copiesLeft;
    static int alive;
    int value;
    explicit Fragile(int v) : value(v) { ++alive; }
    Fragile(Fragile const& other) : value(other.value)
    {
        if (copiesLeft == 0)
            throw std::runtime_error("copy refused");
        --copiesLeft;
        ++alive;
    }
    Fragile& operator=(Fragile const& other) = default;
    ~Fragile() { --alive; }
};
int Fragile::copiesLeft = 0;
int Fragile::alive = 0;

TEST(SortedMap, EveryNodeGoesBackToItsAllocatorEvenWhenACopyFails)
{
    typedef Common::sorted_map<int, Fragile, Common::LessThanPredicate<int>, CountingAllocator>
        FragileMap;
    Fragile::copiesLeft = 1000000;
    {
        FragileMap m;
        for (int key = 0; key < 100; ++key)
            m.insert(FragileMap::value_type(key, Fragile(key)));
        m.erase(5);
        EXPECT_EQ(99, CountingAllocator::live);

        Fragile::copiesLeft = 40;
        EXPECT_THROW(FragileMap copy(m), std::runtime_error);
        EXPECT_EQ(99, CountingAllocator::live);

        Fragile::copiesLeft = 1000000;
        FragileMap target;
        target.insert(FragileMap::value_type(-1, Fragile(-1)));
        Fragile::copiesLeft = 40;
        EXPECT_THROW(target = m, std::runtime_error);
        EXPECT_TRUE(target.empty());
        EXPECT_EQ(99, CountingAllocator::live);

        Fragile::copiesLeft = 1000000;
        FragileMap::value_type item(500, Fragile(500));
        Fragile::copiesLeft = 0;
        EXPECT_THROW(m.insert(item), std::runtime_error);
        EXPECT_EQ(99u, m.size());
        EXPECT_EQ(99, CountingAllocator::live);
        EXPECT_TRUE(m.find(500) == m.end());

        Fragile::copiesLeft = 1000000;
        m.clear();
        EXPECT_EQ(0, CountingAllocator::live);
        for (int key = 0; key < 10; ++key)
            m.insert(FragileMap::value_type(key, Fragile(key)));
        EXPECT_EQ(10, CountingAllocator::live);
    }
    EXPECT_EQ(0, CountingAllocator::live);
    EXPECT_EQ(0, Fragile::alive);
}

// Counts the comparisons made through it.
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

// The most comparisons a lookup or insert may need in an AVL tree of n keys:
// one per level and one more, and such a tree is less than 1.4405 log2(n + 2)
// levels deep.
unsigned comparisonBound(unsigned n)
{
    return static_cast<unsigned>(1.4405 * std::log2(n + 2.0)) + 1;
}

TEST(SortedMap, KeysArrivingInOrderStillGiveLogarithmicLookups)
{
    typedef Common::sorted_map<int, int, CountingLess> CountedMap;
    const int n = 1 << 16;
    CountedMap m;
    // Ascending keys, then every third one erased: the worst case of an
    // unbalanced search tree, and deletions that must rebalance.
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
    EXPECT_LE(worst, comparisonBound(copy.size()));

    // The copy keeps its balance as it grows: descending keys this time.
    worst = 0;
    for (int key = -1; key >= -n; --key)
    {
        CountingLess::calls = 0;
        copy.insert(CountedMap::value_type(key, key));
        worst = std::max(worst, CountingLess::calls);
    }
    EXPECT_LE(worst, comparisonBound(copy.size()));
    EXPECT_EQ(-n, copy.begin()->first);
}

TEST(StringLess, KeysThatDifferOnlyAfterANulByteStayDistinct)
{
    typedef Common::sorted_map<Common::string, int, Common::StringLess> Map;
    Map m;
    m.insert(Map::value_type(Common::string("id\0b", 4), 2));
    m.insert(Map::value_type(Common::string("ie"), 4));
    m.insert(Map::value_type(Common::string("id\0a", 4), 1));
    m.insert(Map::value_type(Common::string("id"), 0));
    m.insert(Map::value_type(Common::string("ic"), 3));
    m.insert(Map::value_type(Common::string("id\0a", 4), 5)); // replaces
    ASSERT_EQ(5u, m.size());
    std::vector<std::string> keys;
    for (Map::const_iterator it = m.begin(); it != m.end(); ++it)
        keys.push_back(std::string(it->first.c_str(), it->first.size()));
    // strcmp order first; "id" and its NUL-extended forms in byte order.
    EXPECT_EQ((std::vector<std::string>{"ic", "id", std::string("id\0a", 4),
                                        std::string("id\0b", 4), "ie"}),
              keys);
    EXPECT_EQ(5, m.find(Common::string("id\0a", 4))->second);
    EXPECT_EQ(0, m.find(Common::string("id"))->second);
    EXPECT_TRUE(m.find(Common::string("id\0c", 4)) == m.end());
}

} // namespace
