#include "common/IString.h"
#include "common/List.h"
#include "common/Map.h"
#include "common/SharedPtr.h"
#include "common/Sort.h"
#include "common/SortedMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <string>
#include <utility>
#include <vector>

using Common::istring;
using Common::string;

namespace
{

// Counts the blocks it has handed out and not yet taken back; every test
// that uses it gives back all it took.
struct CountingAllocator
{
    static inline int live = 0;

    void* allocate(unsigned size)
    {
        ++live;
        return ::operator new(size);
    }
    void deallocate(void* p)
    {
        --live;
        ::operator delete(p);
    }
};

template <class Map> std::vector<std::string> keysOf(Map const& m)
{
    std::vector<std::string> keys;
    for (auto it = m.begin(); it != m.end(); ++it)
        keys.push_back(it->first.c_str());
    return keys;
}

template <class T> std::vector<int> idsOf(Common::list<T> const& l)
{
    std::vector<int> ids;
    for (auto it = l.begin(); it != l.end(); ++it)
        ids.push_back(it->id);
    return ids;
}

struct Tracked
{
    static int alive;
    int id;
    Tracked(int v = 0) : id(v) { ++alive; }
    Tracked(Tracked const& o) : id(o.id) { ++alive; }
    Tracked& operator=(Tracked const& o) = default;
    ~Tracked() { --alive; }
};
int Tracked::alive = 0;

TEST(ListAndSharedPtr, OwnTheirValuesAndReleaseThemOnce)
{
    {
        Common::list<int, CountingAllocator> untouched;
        EXPECT_EQ(0, CountingAllocator::live);
        EXPECT_EQ(0u, untouched.size());
        EXPECT_EQ(1, CountingAllocator::live);
    }
    EXPECT_EQ(0, CountingAllocator::live);
    {
        Common::list<Tracked> items;
        items.push_back(Tracked(1));
        items.push_back(Tracked(3));
        EXPECT_EQ(2, items.insert(++items.begin(), Tracked(2))->id);
        Common::list<Tracked> copy(items);
        EXPECT_EQ(2, copy.erase(copy.begin())->id);
        EXPECT_EQ(copy.end(), copy.erase(copy.end()));
        Common::list<Tracked> assigned;
        assigned.push_back(Tracked(9));
        assigned = items;
        assigned = assigned;
        EXPECT_EQ((std::vector<int>{1, 2, 3}), idsOf(assigned));
        EXPECT_EQ((std::vector<int>{2, 3}), idsOf(copy));
    }
    EXPECT_EQ(0, Tracked::alive);
    {
        Common::shared_ptr<Tracked> first(new Tracked(5)), empty(nullptr);
        {
            Common::shared_ptr<Tracked> second(first), third(new Tracked(6));
            third = second;
            third = third;
            EXPECT_EQ(1, Tracked::alive);
            EXPECT_EQ(3, first.use_count());
        }
        empty = first;
        EXPECT_EQ(2, first.use_count());
        EXPECT_EQ(5, empty->id);
    }
    EXPECT_EQ(0, Tracked::alive);
}

// Common::sort's order, equal neighbours exchanged, is the storage page's tests' concern.
TEST(Map, IStringKeysGoToTheFrontAndKeepTheirFirstSpellingOthersStaySorted)
{
    Common::map<istring, istring> settings;
    for (char const* key : {"b", "a", "c"})
        settings.insert(Common::pair<istring, istring>(key, "1"));
    auto again = settings.insert(Common::pair<istring, istring>("B", "4"));
    EXPECT_FALSE(again.second);
    EXPECT_EQ((std::vector<std::string>{"c", "a", "b"}), keysOf(settings));
    EXPECT_EQ(istring("4"), settings.find(istring("B"))->second);

    Common::map<string, unsigned> counts;
    for (char const* key : {"vendor", "key", "name"})
        counts[string(key)] = 1;
    EXPECT_EQ((std::vector<std::string>{"key", "name", "vendor"}), keysOf(counts));
    EXPECT_EQ(0u, counts[string("new")]);
    EXPECT_EQ(4u, counts.size());
    EXPECT_EQ(counts.end(), counts.find(string("none")));
    EXPECT_EQ(0u, counts.erase(string("none")));
    EXPECT_EQ(1u, counts.erase(string("new")));
}

typedef std::vector<std::pair<int, int>> Entries;

template <class Map> Entries entriesOf(Map const& m)
{
    Entries entries;
    for (auto it = m.begin(); it != m.end(); ++it)
        entries.emplace_back(it->first, it->second);
    return entries;
}

// The XML attributes' container (keys that differ only after a NUL byte are
// the attribute tests' concern); the parser hands the attributes it read to
// the root by a swap.
TEST(SortedMap, KeepsKeysAscendingAndEveryNodeInPlaceThroughErasesCopiesAndSwaps)
{
    typedef Common::sorted_map<int, int, Common::LessThanPredicate<int>, CountingAllocator> Map;
    {
        Map m, original;
        for (int key : {5, 1, 9, 3, 7, 2, 8, 4, 6, 0})
            EXPECT_TRUE(m.insert(Map::value_type(key, -key)).second);
        auto again = m.insert(Map::value_type(2, 21));
        EXPECT_FALSE(again.second);
        EXPECT_TRUE(again.first == m.find(2));
        Map::const_iterator five = m.find(5);
        for (int key : {0, 9, 3, 7, 1, 8}) // leaves, inner nodes and the root
            EXPECT_EQ(1u, m.erase(key)) << key;
        EXPECT_EQ(0u, m.erase(7));
        Entries const left{{2, 21}, {4, -4}, {5, -5}, {6, -6}};
        EXPECT_EQ(left, entriesOf(m));
        EXPECT_EQ(5, five->first);
        EXPECT_EQ(6, (++five)->first);
        EXPECT_TRUE(m.find(10) == m.end());

        for (int i = 0; i < 1000; ++i)
            original.insert(Map::value_type(i * 7919 % 1000, i));
        Entries const before = entriesOf(original);
        Map copy(original);
        copy.erase(3);
        EXPECT_EQ(before, entriesOf(original));
        Map::const_iterator fifteen = copy.find(15);
        m.swap(copy);
        EXPECT_EQ(left, entriesOf(copy));
        EXPECT_TRUE(fifteen == m.find(15));
        EXPECT_EQ(1000 + 999 + 4, CountingAllocator::live);
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
    for (int key = -n; key < n; ++key) // finds, then inserts of keys below every other
    {
        CountingLess::calls = 0;
        if (key < 0)
            EXPECT_EQ((-1 - key) % 3 != 0, copy.find(-1 - key) != copy.end());
        else
            copy.insert(CountedMap::value_type(-1 - key, 0));
        worst = std::max(worst, CountingLess::calls);
    }
    EXPECT_LE(worst, bound(copy.size()));
}

} // namespace
