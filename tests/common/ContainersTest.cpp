// Common::list, Common::map, Common::sort and Common::shared_ptr.
#include "CountingAllocator.h"
#include "common/IString.h"
#include "common/List.h"
#include "common/Map.h"
#include "common/SharedPtr.h"
#include "common/Sort.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Common::istring;
using Common::string;

namespace
{

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

struct Ranked
{
    int rank;
    int id;
    bool operator<(Ranked const& other) const { return rank < other.rank; }
};

TEST(List, AllocatesItsSentinelOnFirstUseAndOwnsItsValues)
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
}

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

TEST(Sort, BubbleSortSwapsEqualNeighboursEachTimeTheyMeet)
{
    Common::list<Ranked> items;
    for (Ranked r : {Ranked{4, 1}, Ranked{1, 2}, Ranked{3, 3}, Ranked{2, 4}})
        items.push_back(r);
    Common::sort(items.begin(), items.end(), Common::LessThanPredicate<Ranked>());
    EXPECT_EQ((std::vector<int>{2, 4, 3, 1}), idsOf(items));

    // With three elements the equal pair meets twice and ends where it
    // started; with two it meets once and ends exchanged.
    Common::list<Ranked> three, two, empty;
    for (Ranked r : {Ranked{1, 10}, Ranked{1, 11}, Ranked{5, 12}})
        three.push_back(r);
    two.push_back(Ranked{1, 10});
    two.push_back(Ranked{1, 11});
    Common::sort(three.begin(), three.end(), Common::LessThanPredicate<Ranked>());
    Common::sort(two.begin(), two.end(), Common::LessThanPredicate<Ranked>());
    Common::sort(empty.begin(), empty.end(), Common::LessThanPredicate<Ranked>());
    EXPECT_EQ((std::vector<int>{10, 11, 12}), idsOf(three));
    EXPECT_EQ((std::vector<int>{11, 10}), idsOf(two));
}

TEST(SharedPtr, DeletesTheObjectWithItsLastOwner)
{
    {
        Common::shared_ptr<Tracked> first(new Tracked(5));
        {
            Common::shared_ptr<Tracked> second(first);
            Common::shared_ptr<Tracked> third(new Tracked(6));
            third = second;
            third = third;
            EXPECT_EQ(1, Tracked::alive);
            EXPECT_EQ(3, first.use_count());
        }
        EXPECT_EQ(1, first.use_count());
        Common::shared_ptr<Tracked> empty(nullptr);
        empty = first;
        EXPECT_EQ(2, first.use_count());
        EXPECT_EQ(5, empty->id);
    }
    EXPECT_EQ(0, Tracked::alive);
}

} // namespace
