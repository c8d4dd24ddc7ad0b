// The pool against a plain, slow rendition of its rules: one long random
// sequence of operations goes to both, and every address the pool returns and
// its ToXML dump (at intervals) must be what the plain rules give.
//
// The number of operations comes from the environment variable
// TIDEWELL_POOL_OPERATIONS (default 50,000, the suite's share); the full check
// is a million:
//   TIDEWELL_POOL_OPERATIONS=1000000 build/release/tests/common_tests --gtest_filter='PoolDecisions.*'
// TIDEWELL_POOL_SEED picks another sequence (default 1).
#include "common/GlobalStaticAllocator.h"
#include "tests/common/PoolTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

using namespace PoolTest;

namespace
{

unsigned long environmentNumber(char const* name, unsigned long fallback)
{
    char const* text = std::getenv(name);
    return text != nullptr && *text != '\0' ? std::strtoul(text, nullptr, 10) : fallback;
}

std::uintptr_t address(void const* p)
{
    return reinterpret_cast<std::uintptr_t>(p);
}

// The pool's rules done the obvious way: per segment a list of free blocks
// (offset from the segment start, size) in address order, a visiting order
// sorted afresh for every allocation, and nothing remembered besides.
class PlainPool
{
public:
    static unsigned const kNone = 0xFFFFFFFF;

    PlainPool() : m_free(10, std::vector<Free>{{0, 65535}}) {}

    // The block's offset from the pool start (the byte after its header is
    // what allocate returns), or kNone when no segment has room.
    unsigned allocate(unsigned n)
    {
        if (n > 65533)
            return kNone;
        unsigned need = std::max(n + 2, 4u);
        int order[10];
        for (int i = 0; i < 10; ++i)
            order[i] = i;
        std::stable_sort(order, order + 10,
                         [&](int a, int b) { return m_free[a].size() < m_free[b].size(); });
        for (int i : order)
        {
            std::vector<Free>& list = m_free[i];
            for (size_t k = 0; k < list.size(); ++k)
            {
                if (list[k].size != need && list[k].size < need + 4)
                    continue; // exact fit, or a remainder of at least 4 bytes
                unsigned offset = list[k].offset;
                if (list[k].size == need)
                    list.erase(list.begin() + k);
                else
                {
                    list[k].offset += need;
                    list[k].size -= need;
                }
                return i * 65535 + offset;
            }
        }
        return kNone;
    }

    // Frees the block at `at` (from the pool start) of `length` bytes
    // (header included), merging it with free neighbours.
    void release(unsigned at, unsigned length)
    {
        std::vector<Free>& list = m_free[at / 65535];
        unsigned offset = at % 65535;
        size_t k = 0;
        while (k < list.size() && list[k].offset < offset)
            ++k;
        list.insert(list.begin() + k, Free{offset, length});
        if (k + 1 < list.size() && offset + length == list[k + 1].offset)
        {
            list[k].size += list[k + 1].size;
            list.erase(list.begin() + k + 1);
        }
        if (k > 0 && list[k - 1].offset + list[k - 1].size == offset)
        {
            list[k - 1].size += list[k].size;
            list.erase(list.begin() + k);
        }
    }

    // True when the byte at `at` (from the pool start) is free.
    bool isFree(unsigned at) const
    {
        for (Free const& f : m_free[at / 65535])
            if (at % 65535 >= f.offset && at % 65535 < f.offset + f.size)
                return true;
        return false;
    }

    // A free block's size picked by `pick`, or 0 when the pool is full.
    unsigned someFreeSize(unsigned pick) const
    {
        size_t blocks = 0;
        for (auto const& list : m_free)
            blocks += list.size();
        if (blocks == 0)
            return 0;
        size_t k = pick % blocks;
        for (auto const& list : m_free)
        {
            if (k < list.size())
                return list[k].size;
            k -= list.size();
        }
        return 0;
    }

    // The dump ToXML should write for a pool at `base`.
    std::string xml(std::uintptr_t base) const
    {
        std::string text;
        text.reserve(4096);
        text += "<MemoryPool>";
        element(text, "Address", unsigned(base));
        for (int i = 0; i < 10; ++i)
        {
            std::vector<Free> const& list = m_free[i];
            text += "<Segment>";
            element(text, "Index", i);
            element(text, "Address", unsigned(base + i * 65535));
            element(text, "FreeListCount", unsigned(list.size()));
            unsigned space = 0;
            for (size_t k = 0; k < list.size(); ++k)
            {
                text += "<FreeListNode>";
                element(text, "Size", list[k].size);
                element(text, "NextOffset",
                        k + 1 < list.size() ? list[k + 1].offset - list[k].offset : 0);
                text += "</FreeListNode>";
                space += list[k].size;
            }
            element(text, "FreeSpace", space);
            text += "</Segment>";
        }
        return text + "</MemoryPool>";
    }

private:
    struct Free
    {
        unsigned offset;
        unsigned size;
    };

    static void element(std::string& text, char const* name, unsigned value)
    {
        char one[80];
        std::snprintf(one, sizeof one, "<%s>0x%x</%s>", name, value, name);
        text += one;
    }

    std::vector<std::vector<Free>> m_free;
};

std::string poolXml()
{
    std::vector<char> buffer(Pool::toXMLSize());
    return Pool::ToXML(buffer.data(), buffer.size());
}

struct Block
{
    unsigned char* p;
    unsigned n;
    unsigned char fill;
};

} // namespace

TEST(PoolDecisions, FastPoolTakesTheSameBlocksAsThePlainRules)
{
    Pool::Initialize();
    ASSERT_TRUE(isPristine(snapshot())) << "an earlier test left blocks in the pool";
    unsigned long const operations = environmentNumber("TIDEWELL_POOL_OPERATIONS", 50000);
    unsigned long const seed = environmentNumber("TIDEWELL_POOL_SEED", 1);
    unsigned long const dumpEvery = std::max(operations / 50, 1ul);
    SCOPED_TRACE("seed " + std::to_string(seed));

    char* const base = Pool::getSegmentAddr(0);
    PlainPool plain;
    ASSERT_EQ(poolXml(), plain.xml(address(base)));

    std::mt19937 random(seed);
    std::vector<Block> live;
    std::vector<void*> freed; // pointers given back, for second frees
    int onStack = 0;
    std::vector<char> onHeap(64);
    void* const foreign[] = {nullptr,       &onStack,       onHeap.data() + 2,
                             base - 64,     base + 1,       base + Pool::PoolSize,
                             base + Pool::PoolSize + 2, base + Pool::PoolSize + 4096};
    unsigned long nulls = 0, ignored = 0;

    for (unsigned long step = 0; step < operations; ++step)
    {
        unsigned kind = random() % 100;
        if (live.empty() || kind < 52)
        {
            unsigned n;
            unsigned sort = random() % 100;
            if (sort < 20)
                n = random() % 4; // 0-3 bytes: 4 or 5 bytes in the pool
            else if (sort < 55)
                n = random() % 64;
            else if (sort < 75)
                n = random() % 2000;
            else if (sort < 85)
            {
                // Around a free block's size: exact fits and the 1-3 byte skip.
                unsigned size = plain.someFreeSize(random());
                n = size >= 6 ? size - 2 - random() % 5 : 0;
            }
            else if (sort < 96)
                n = random() % 20000;
            else if (sort < 99)
                n = 65533 - random() % 8; // a whole segment, or nearly
            else
                n = 65534 + random() % 1000; // never fits

            unsigned expected = plain.allocate(n);
            unsigned char* p = static_cast<unsigned char*>(Pool::allocate(n));
            if (expected == PlainPool::kNone)
            {
                ASSERT_EQ(p, nullptr) << "step " << step << ", n = " << n;
                ++nulls;
                continue;
            }
            ASSERT_NE(p, nullptr) << "step " << step << ", n = " << n;
            ASSERT_EQ(address(p) - address(base), expected + 2) << "step " << step << ", n = " << n;
            ASSERT_EQ(headerOf(p), std::max(n, 2u)) << "step " << step;
            ASSERT_EQ(std::count(p, p + n, 0), long(n)) << "not zero-filled at step " << step;
            Block block = {p, n, static_cast<unsigned char>(1 + random() % 255)};
            std::memset(p, block.fill, n);
            live.push_back(block);
        }
        else if (kind < 94)
        {
            size_t k = random() % live.size();
            Block block = live[k];
            live[k] = live.back();
            live.pop_back();
            ASSERT_EQ(std::count(block.p, block.p + block.n, block.fill), long(block.n))
                << "a live block was overwritten, found at step " << step;
            Pool::deallocate(block.p);
            unsigned at = static_cast<unsigned>(address(block.p) - address(base)) - 2;
            plain.release(at, std::max(block.n + 2, 4u));
            freed.push_back(block.p);
        }
        else
        {
            // Must be ignored: a pointer outside the pool, or a second free of a
            // block whose start now lies in free memory.
            void* p = foreign[random() % (sizeof foreign / sizeof foreign[0])];
            if (kind < 97 && !freed.empty())
            {
                void* again = freed[random() % freed.size()];
                unsigned at = static_cast<unsigned>(address(again) - address(base)) - 2;
                if (plain.isFree(at))
                    p = again;
            }
            Pool::deallocate(p);
            ++ignored;
        }
        if (freed.size() > 256)
            freed.erase(freed.begin(), freed.begin() + 128);

        if (step % dumpEvery == 0)
        {
            ASSERT_EQ(poolXml(), plain.xml(address(base))) << "step " << step;
            ASSERT_TRUE(Pool::isInvariant()) << "step " << step;
        }
    }
    EXPECT_GT(nulls, 0ul);
    EXPECT_GT(ignored, 0ul);
    ASSERT_EQ(poolXml(), plain.xml(address(base)));

    for (Block const& block : live)
    {
        Pool::deallocate(block.p);
        plain.release(static_cast<unsigned>(address(block.p) - address(base)) - 2,
                      std::max(block.n + 2, 4u));
    }
    EXPECT_EQ(poolXml(), plain.xml(address(base)));
    EXPECT_TRUE(isPristine(snapshot()));
}
