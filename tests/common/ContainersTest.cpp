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

struct Tracked
{
    static int alive;
    int value;
    Tracked(int v = 0) : value(v) { ++alive; }
    Tracked(Tracked const& o) : value(o.value) { ++alive; }
    Tracked& operator=(Tracked const& o)
    {
        value = o.value;
        return *this;
    }
    ~Tracked() { --alive; }
};
int Tracked::alive = 0;

struct Ranked
{
    int rank;
    int id;
    bool operator<(Ranked const& other) const { return rank < other.rank; }
};
} // namespace

TEST(List, AllocatesItsSentinelOnFirstUse)
{
    {
        Common::list<int, CountingAllocator> untouched;
        EXPECT_EQ(0, CountingAllocator::live);
    }
    {
        Common::list<int, CountingAllocator> used;
        EXPECT_EQ(0u, used.size());
        EXPECT_EQ(1, CountingAllocator::live);
        used.push_back(1);
        used.push_back(2);
        EXPECT_EQ(3, CountingAllocator::live);
        used.clear();
        EXPECT_EQ(1, CountingAllocator::live);
    }
    EXPECT_EQ(0, CountingAllocator::live);
}

TEST(List, InsertEraseAndCopyOwnTheirValues)
{
    {
        Common::list<Tracked> items;
        items.push_back(Tracked(1));
        items.push_back(Tracked(3));
        auto second = items.begin();
        ++second;
        auto inserted = items.insert(second, Tracked(2));
        EXPECT_EQ(2, inserted->value);

        Common::list<Tracked> copy(items);
        auto after = copy.erase(copy.begin());
        EXPECT_EQ(2, after->value);
        EXPECT_EQ(2u, copy.size());
        EXPECT_EQ(3u, items.size());
        EXPECT_EQ(copy.end(), copy.erase(copy.end()));

        Common::list<Tracked> assigned;
        assigned.push_back(Tracked(9));
        assigned = items;
        assigned = assigned;
        std::vector<int> values;
        for (auto it = assigned.begin(); it != assigned.end(); ++it)
            values.push_back(it->value);
        EXPECT_EQ((std::vector<int>{1, 2, 3}), values);

        Common::list<Tracked> ranged;
        ranged.insert(ranged.end(), items.begin(), items.end());
        EXPECT_EQ(3u, ranged.size());
    }
    EXPECT_EQ(0, Tracked::alive);
}

TEST(Map, IStringKeysGoToTheFrontAndKeepTheirFirstSpelling)
{
    Common::map<istring, istring> settings;
    settings.insert(Common::pair<istring, istring>("b", "1"));
    settings.insert(Common::pair<istring, istring>("a", "2"));
    settings.insert(Common::pair<istring, istring>("c", "3"));
    EXPECT_EQ((std::vector<std::string>{"c", "a", "b"}), keysOf(settings));

    auto again = settings.insert(Common::pair<istring, istring>("B", "4"));
    EXPECT_FALSE(again.second);
    EXPECT_STREQ("b", again.first->first.c_str());
    EXPECT_EQ((std::vector<std::string>{"c", "a", "b"}), keysOf(settings));
    EXPECT_EQ(istring("4"), settings[istring("b")]);
    EXPECT_EQ(istring("4"), settings.find(istring("B"))->second);
}

TEST(Map, OrderedKeysStayAscending)
{
    Common::map<unsigned, string> numbers;
    numbers[3] = "three";
    numbers[1] = "one";
    numbers[2] = "two";
    std::vector<unsigned> keys;
    for (auto it = numbers.begin(); it != numbers.end(); ++it)
        keys.push_back(it->first);
    EXPECT_EQ((std::vector<unsigned>{1, 2, 3}), keys);

    Common::map<string, string> attributes;
    attributes[string("vendor")] = "1";
    attributes[string("key")] = "2";
    attributes[string("name")] = "3";
    EXPECT_EQ((std::vector<std::string>{"key", "name", "vendor"}), keysOf(attributes));
}

TEST(Map, LookupDefaultsAndErase)
{
    Common::map<string, unsigned> counts;
    EXPECT_EQ(0u, counts[string("new")]);
    EXPECT_EQ(1u, counts.size());
    counts[string("new")] = 7;
    EXPECT_EQ(7u, counts.find(string("new"))->second);
    EXPECT_EQ(counts.end(), counts.find(string("none")));
    EXPECT_EQ(0u, counts.erase(string("none")));
    EXPECT_EQ(1u, counts.erase(string("new")));
    EXPECT_EQ(0u, counts.size());

    Common::map<string, unsigned> const& view = counts;
    EXPECT_EQ(view.end(), view.find(string("new")));
}

TEST(Sort, BubbleSortSwapsEqualNeighbours)
{
    Common::list<string> names;
    names.push_back("delta");
    names.push_back("alpha");
    names.push_back("charlie");
    names.push_back("bravo");
    Common::sort(names.begin(), names.end(), Common::LessThanPredicate<string>());
    std::vector<std::string> got;
    for (auto it = names.begin(); it != names.end(); ++it)
        got.push_back(it->c_str());
    EXPECT_EQ((std::vector<std::string>{"alpha", "bravo", "charlie", "delta"}), got);

    // Two equal ranks: each of the n-1 passes exchanges them when they meet.
    // With three elements the pair meets twice and ends where it started;
    // with two elements it meets once and ends exchanged.
    Common::list<Ranked> three;
    three.push_back(Ranked{1, 10});
    three.push_back(Ranked{1, 11});
    three.push_back(Ranked{5, 12});
    Common::sort(three.begin(), three.end(), Common::LessThanPredicate<Ranked>());
    std::vector<int> ids;
    for (auto it = three.begin(); it != three.end(); ++it)
        ids.push_back(it->id);
    EXPECT_EQ((std::vector<int>{10, 11, 12}), ids);

    Common::list<Ranked> two;
    two.push_back(Ranked{1, 10});
    two.push_back(Ranked{1, 11});
    Common::sort(two.begin(), two.end(), Common::LessThanPredicate<Ranked>());
    EXPECT_EQ(11, two.begin()->id);

    Common::list<Ranked> empty;
    Common::sort(empty.begin(), empty.end(), Common::LessThanPredicate<Ranked>());
    EXPECT_EQ(0u, empty.size());
}

TEST(SharedPtr, DeletesTheObjectWithItsLastOwner)
{
    {
        Common::shared_ptr<Tracked> first(new Tracked(5));
        EXPECT_EQ(1, Tracked::alive);
        {
            Common::shared_ptr<Tracked> second(first);
            Common::shared_ptr<Tracked> third(new Tracked(6));
            third = second;
            EXPECT_EQ(1, Tracked::alive);
            EXPECT_EQ(3, first.use_count());
            EXPECT_EQ(5, third->value);
            third = third;
            EXPECT_EQ(3, first.use_count());
        }
        EXPECT_EQ(1, first.use_count());
        EXPECT_EQ(5, (*first).value);

        Common::shared_ptr<Tracked> empty(nullptr);
        EXPECT_EQ(nullptr, empty.get());
        empty = first;
        EXPECT_EQ(2, first.use_count());
    }
    EXPECT_EQ(0, Tracked::alive);
}
