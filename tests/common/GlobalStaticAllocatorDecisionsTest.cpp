// The pool against a plain rendition of its rules on one random sequence:
// every address and the ToXML dump must match. TIDEWELL_POOL_OPERATIONS
// (default 50,000; the full check is 1,000,000) and TIDEWELL_POOL_SEED.
#include "common/GlobalStaticAllocator.h"
#include "tests/common/PoolTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>

using namespace PoolTest;

namespace
{

unsigned long environmentNumber(char const* name, unsigned long fallback)
{
    char const* text = std::getenv(name);
    return text != nullptr && *text != '\0' ? std::strtoul(text, nullptr, 10) : fallback;
}

// Per segment a list of free blocks in address order; segments visited
// fewest free blocks first; the first block that fits exactly or leaves at
// least 4 bytes. Offsets count from the pool start.
class PlainPool
{
public:
    static unsigned const kNone = 0xFFFFFFFF;

    PlainPool() : m_free(10, std::vector<Free>{{0, 65535}}) {}

    unsigned allocate(unsigned n)
    {
        unsigned need = std::max(n + 2, 4u);
        int order[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
        std::stable_sort(order, order + 10,
                         [&](int a, int b) { return m_free[a].size() < m_free[b].size(); });
        for (int i : order)
            for (auto f = m_free[i].begin(); n <= 65533 && f != m_free[i].end(); ++f)
                if (f->size == need || f->size >= need + 4)
                {
                    unsigned offset = f->offset;
                    if (f->size == need)
                        m_free[i].erase(f);
                    else
                        *f = Free{f->offset + need, f->size - need};
                    return i * 65535 + offset;
                }
        return kNone;
    }

    void release(unsigned at, unsigned length)
    {
        std::vector<Free>& list = m_free[at / 65535];
        unsigned offset = at % 65535;
        auto k = list.insert(
            std::find_if(list.begin(), list.end(), [&](Free f) { return f.offset > offset; }),
            Free{offset, length});
        if (k + 1 != list.end() && offset + length == (k + 1)->offset)
        {
            k->size += (k + 1)->size;
            list.erase(k + 1);
        }
        if (k != list.begin() && (k - 1)->offset + (k - 1)->size == offset)
        {
            (k - 1)->size += k->size;
            list.erase(k);
        }
    }

    bool isFree(unsigned at) const
    {
        for (Free const& f : m_free[at / 65535])
            if (at % 65535 >= f.offset && at % 65535 < f.offset + f.size)
                return true;
        return false;
    }

    unsigned someFreeSize(unsigned pick) const
    {
        std::vector<Free> const& list = m_free[pick % 10];
        return list.empty() ? 0 : list[pick / 10 % list.size()].size;
    }

    std::string xml(unsigned base) const
    {
        std::string text = "<MemoryPool>" + element("Address", base);
        for (unsigned i = 0; i < 10; ++i)
        {
            std::vector<Free> const& list = m_free[i];
            text += "<Segment>" + element("Index", i) + element("Address", base + i * 65535) +
                    element("FreeListCount", list.size());
            unsigned space = 0;
            for (size_t k = 0; k < list.size(); ++k)
            {
                unsigned next = k + 1 < list.size() ? list[k + 1].offset - list[k].offset : 0;
                text += "<FreeListNode>" + element("Size", list[k].size) +
                        element("NextOffset", next) + "</FreeListNode>";
                space += list[k].size;
            }
            text += element("FreeSpace", space) + "</Segment>";
        }
        return text + "</MemoryPool>";
    }

private:
    struct Free
    {
        unsigned offset;
        unsigned size;
    };

    static std::string element(char const* name, unsigned value)
    {
        char one[80];
        std::snprintf(one, sizeof one, "<%s>0x%x</%s>", name, value, name);
        return one;
    }

    std::vector<std::vector<Free>> m_free;
};

struct Block
{
    unsigned char* p;
    unsigned n;
    unsigned char fill;
};

TEST(PoolDecisions, FastPoolTakesTheSameBlocksAsThePlainRules)
{
    Pool::Initialize();
    ASSERT_TRUE(isPristine()) << "an earlier test left blocks in the pool";
    unsigned long const operations = environmentNumber("TIDEWELL_POOL_OPERATIONS", 50000);
    unsigned long const seed = environmentNumber("TIDEWELL_POOL_SEED", 1);
    unsigned long const dumpEvery = std::max(operations / 50, 1ul);
    SCOPED_TRACE("seed " + std::to_string(seed));

    char* const base = Pool::getSegmentAddr(0);
    unsigned const baseAddress = unsigned(reinterpret_cast<std::uintptr_t>(base));
    auto at = [&](void const* p) { return unsigned(static_cast<char const*>(p) - base) - 2; };
    PlainPool plain;
    std::mt19937 random(seed);
    std::vector<Block> live;
    std::vector<void*> freed; // pointers given back, for second frees
    int onStack = 0;
    std::vector<char> onHeap(64);
    void* const foreign[] = {nullptr,  &onStack, onHeap.data() + 2,      base - 64,
                             base + 1, base + Pool::PoolSize, base + Pool::PoolSize + 2,
                             base + Pool::PoolSize + 4096};
    unsigned long nulls = 0, ignored = 0;
    auto giveBack = [&](Block const& block)
    {
        bool intact = std::count(block.p, block.p + block.n, block.fill) == long(block.n);
        Pool::deallocate(block.p);
        plain.release(at(block.p), std::max(block.n + 2, 4u));
        return intact;
    };

    for (unsigned long step = 0; step < operations; ++step)
    {
        SCOPED_TRACE("step " + std::to_string(step));
        unsigned kind = random() % 100;
        if (live.empty() || kind < 52)
        {
            unsigned sort = random() % 100, n = random();
            if (sort >= 75 && sort < 85) // around a free block's size: exact fits, 1-3 byte skips
            {
                unsigned size = plain.someFreeSize(random());
                n = size >= 6 ? size - 2 - n % 5 : 0;
            }
            else
                n = sort < 20   ? n % 4
                    : sort < 55 ? n % 64
                    : sort < 75 ? n % 2000
                    : sort < 96 ? n % 20000
                    : sort < 99 ? 65533 - n % 8     // a whole segment, or nearly
                                : 65534 + n % 1000; // never fits

            unsigned expected = plain.allocate(n);
            unsigned char* p = static_cast<unsigned char*>(Pool::allocate(n));
            if (expected == PlainPool::kNone)
            {
                ASSERT_EQ(nullptr, p) << "n = " << n;
                ++nulls;
                continue;
            }
            ASSERT_NE(nullptr, p) << "n = " << n;
            ASSERT_EQ(expected, at(p)) << "n = " << n;
            unsigned short header;
            std::memcpy(&header, p - 2, 2);
            ASSERT_EQ(std::max(n, 2u), header);
            ASSERT_EQ(long(n), std::count(p, p + n, 0)) << "not zero-filled";
            live.push_back({p, n, static_cast<unsigned char>(1 + random() % 255)});
            std::memset(p, live.back().fill, n);
        }
        else if (kind < 94)
        {
            std::swap(live[random() % live.size()], live.back());
            ASSERT_TRUE(giveBack(live.back())) << "a live block was overwritten";
            freed.push_back(live.back().p);
            live.pop_back();
        }
        else
        {
            // Ignored: a pointer outside the pool, or a second free.
            void* p = foreign[random() % (sizeof foreign / sizeof foreign[0])];
            void* again = freed.empty() ? nullptr : freed[random() % freed.size()];
            if (kind < 97 && again != nullptr && plain.isFree(at(again)))
                p = again;
            Pool::deallocate(p);
            ++ignored;
        }
        if (freed.size() > 256)
            freed.erase(freed.begin(), freed.begin() + 128);
        if (step % dumpEvery == 0)
        {
            ASSERT_EQ(plain.xml(baseAddress), poolXml());
            ASSERT_TRUE(Pool::isInvariant());
        }
    }
    EXPECT_TRUE(nulls > 0 && ignored > 0) << "the sequence missed a case";
    ASSERT_EQ(plain.xml(baseAddress), poolXml());
    for (Block const& block : live)
        EXPECT_TRUE(giveBack(block));
    EXPECT_TRUE(isPristine());
}

} // namespace
