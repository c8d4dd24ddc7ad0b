#include "common/GlobalStaticAllocator.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <pthread.h>

namespace Common
{

unsigned long s_gTotalHeapMemory = 0;

namespace
{

typedef GlobalStaticAllocator::FreeListNode FreeListNode;

enum
{
    SegmentCount = GlobalStaticAllocator::SegmentCount,
    SegmentSize = GlobalStaticAllocator::SegmentSize,
    PoolSize = GlobalStaticAllocator::PoolSize,
    HeaderSize = GlobalStaticAllocator::HeaderSize,
    MinBlockSize = GlobalStaticAllocator::MinBlockSize,
    MaxRequest = GlobalStaticAllocator::MaxRequest,
    ObjectAlignment = GlobalStaticAllocator::ObjectAlignment
};

struct SegmentInfo
{
    FreeListNode* head;   // first free node, null when the segment is full
    unsigned short count; // number of free nodes
};

// Constant-initialized, so usable from any static constructor of any unit.
pthread_mutex_t s_lock = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
char* s_pool = nullptr;
SegmentInfo s_segment[SegmentCount];

std::uintptr_t address(void const* p)
{
    return reinterpret_cast<std::uintptr_t>(p);
}

char* bytes(FreeListNode* node)
{
    return reinterpret_cast<char*>(node);
}

FreeListNode* nodeAt(char* p)
{
    return reinterpret_cast<FreeListNode*>(p);
}

// Segment of p, or -1 (no locking; the pool must exist).
int segmentOf(void const* p)
{
    std::uintptr_t a = address(p);
    std::uintptr_t base = address(s_pool);
    if (s_pool == nullptr || a < base || a - base >= PoolSize)
        return -1;
    return static_cast<int>((a - base) / SegmentSize);
}

char* segmentStart(int i)
{
    return s_pool + i * SegmentSize;
}

FreeListNode* next(FreeListNode* node)
{
    return node->nextOffset == 0 ? nullptr : nodeAt(bytes(node) + node->nextOffset);
}

unsigned short distance(void const* from, void const* to)
{
    return static_cast<unsigned short>(address(to) - address(from));
}

unsigned short readHeader(char const* block)
{
    unsigned short header;
    std::memcpy(&header, block, sizeof header);
    return header;
}

void writeHeader(char* block, unsigned short header)
{
    std::memcpy(block, &header, sizeof header);
}

// The dump of ToXML, cut to the capacity given (which counts the NUL); with
// capacity 0 it only measures.
class XmlWriter
{
public:
    XmlWriter(char* buffer, unsigned capacity) : m_buffer(buffer), m_capacity(capacity), m_length(0)
    {
        terminate();
    }

    void text(char const* s)
    {
        for (; *s != '\0'; ++s)
        {
            if (m_capacity != 0 && m_length + 1 < m_capacity)
                m_buffer[m_length] = *s;
            ++m_length;
        }
        terminate();
    }

    void element(char const* name, unsigned value)
    {
        char number[16];
        std::snprintf(number, sizeof number, "0x%x", value);
        text("<");
        text(name);
        text(">");
        text(number);
        text("</");
        text(name);
        text(">");
    }

    unsigned needed() const { return m_length + 1; }

private:
    void terminate()
    {
        if (m_capacity == 0)
            return;
        unsigned end = m_length < m_capacity - 1 ? m_length : m_capacity - 1;
        m_buffer[end] = '\0';
    }

    char* m_buffer;
    unsigned m_capacity;
    unsigned m_length;
};

void writeXml(XmlWriter& out)
{
    out.text("<MemoryPool>");
    out.element("Address", static_cast<unsigned>(address(s_pool)));
    for (int i = 0; i < SegmentCount; ++i)
    {
        out.text("<Segment>");
        out.element("Index", static_cast<unsigned>(i));
        out.element("Address", static_cast<unsigned>(address(segmentStart(i))));
        out.element("FreeListCount", s_segment[i].count);
        unsigned freeSpace = 0;
        for (FreeListNode* node = s_segment[i].head; node != nullptr; node = next(node))
        {
            out.text("<FreeListNode>");
            out.element("Size", node->size);
            out.element("NextOffset", node->nextOffset);
            out.text("</FreeListNode>");
            freeSpace += node->size;
        }
        out.element("FreeSpace", freeSpace);
        out.text("</Segment>");
    }
    out.text("</MemoryPool>");
}

// The pool part of allocateObject: an aligned object inside a pool block, the
// distance back to the block's data in the byte before it; null when no room.
void* allocateAlignedFromPool(std::size_t size)
{
    if (size > static_cast<std::size_t>(MaxRequest) - ObjectAlignment)
        return nullptr;
    char* raw = static_cast<char*>(
        GlobalStaticAllocator::allocate(static_cast<unsigned>(size) + ObjectAlignment));
    if (raw == nullptr)
        return nullptr;
    std::uintptr_t object = (address(raw) + ObjectAlignment) & ~std::uintptr_t(ObjectAlignment - 1);
    unsigned shift = static_cast<unsigned>(object - address(raw)); // 1..ObjectAlignment
    raw[shift - 1] = static_cast<char>(shift);
    return raw + shift;
}

} // namespace

unsigned long LogTotalHeapMemory(std::FILE* out)
{
    unsigned long total;
    {
        GlobalStaticAllocator::Guard lock;
        total = s_gTotalHeapMemory;
    }
    if (out != nullptr)
        std::fprintf(out, "TotalHeapMemory: %lu\n", total);
    return total;
}

GlobalStaticAllocator::Guard::Guard()
{
    pthread_mutex_lock(&s_lock);
}

GlobalStaticAllocator::Guard::~Guard()
{
    pthread_mutex_unlock(&s_lock);
}

void GlobalStaticAllocator::Initialize()
{
    Guard lock;
    if (s_pool != nullptr)
        return;
    char* pool = static_cast<char*>(::operator new(PoolSize));
    s_gTotalHeapMemory += PoolSize;
    std::memset(pool, 0, PoolSize);
    s_pool = pool;
    for (int i = 0; i < SegmentCount; ++i)
    {
        FreeListNode* node = nodeAt(segmentStart(i));
        node->size = SegmentSize;
        node->nextOffset = 0;
        s_segment[i].head = node;
        s_segment[i].count = 1;
    }
}

void* GlobalStaticAllocator::allocate(unsigned int n)
{
    Guard lock;
    Initialize();
    if (n > static_cast<unsigned>(MaxRequest))
        return nullptr;
    unsigned need = n + HeaderSize;
    if (need < static_cast<unsigned>(MinBlockSize))
        need = MinBlockSize;

    FreeListNode* prev;
    FreeListNode* node;
    int i = findBestSegmentForAlloc(need, prev, node);
    if (i < 0)
        return nullptr;
    SegmentInfo& segment = s_segment[i];

    if (node->size == need)
    {
        FreeListNode* following = next(node);
        if (prev != nullptr)
            prev->nextOffset =
                following == nullptr
                    ? 0
                    : static_cast<unsigned short>(prev->nextOffset + node->nextOffset);
        else
            segment.head = following;
        --segment.count;
    }
    else
    {
        // node->size >= need + 4: the remainder is a node of its own.
        FreeListNode* rest = nodeAt(bytes(node) + need);
        rest->size = static_cast<unsigned short>(node->size - need);
        rest->nextOffset =
            node->nextOffset == 0 ? 0 : static_cast<unsigned short>(node->nextOffset - need);
        if (prev != nullptr)
            prev->nextOffset = static_cast<unsigned short>(prev->nextOffset + need);
        else
            segment.head = rest;
    }

    char* block = bytes(node);
    std::memset(block, 0, need);
    writeHeader(block, static_cast<unsigned short>(need - HeaderSize));
    return block + HeaderSize;
}

void GlobalStaticAllocator::deallocate(void* p)
{
    Guard lock;
    Initialize();
    if (p == nullptr || address(p) < address(s_pool) + HeaderSize)
        return;
    char* block = static_cast<char*>(p) - HeaderSize;
    int i = segmentOf(block);
    if (i < 0)
        return;
    unsigned length = readHeader(block) + HeaderSize;
    // Not a block that allocate() could have made: ignore it.
    if (length < static_cast<unsigned>(MinBlockSize) ||
        address(block) + length > address(segmentStart(i)) + SegmentSize)
        return;

    SegmentInfo& segment = s_segment[i];
    FreeListNode* prev = nullptr;
    FreeListNode* following = segment.head;
    while (following != nullptr && address(following) < address(block))
    {
        prev = following;
        following = next(following);
    }
    // A block overlapping free memory is not allocated (for instance a second
    // free of the same pointer): ignore it rather than corrupt the lists.
    if (prev != nullptr && address(prev) + prev->size > address(block))
        return;
    if (following != nullptr && address(block) + length > address(following))
        return;

    std::memset(block, 0, length);
    FreeListNode* node = nodeAt(block);
    node->size = static_cast<unsigned short>(length);
    node->nextOffset = following == nullptr ? 0 : distance(block, following);
    if (prev != nullptr)
        prev->nextOffset = distance(prev, block);
    else
        segment.head = node;
    ++segment.count;

    Coalesce(prev != nullptr ? prev : node);
}

void* GlobalStaticAllocator::allocateObject(std::size_t size)
{
    void* object = allocateAlignedFromPool(size);
    if (object != nullptr)
        return object;
    return ::operator new(size);
}

void GlobalStaticAllocator::deallocateObject(void* p)
{
    if (p == nullptr)
        return;
    Guard lock;
    Initialize();
    if (segmentOf(p) < 0)
    {
        ::operator delete(p);
        return;
    }
    char* object = static_cast<char*>(p);
    unsigned shift = static_cast<unsigned char>(object[-1]);
    if (shift == 0 || shift > static_cast<unsigned>(ObjectAlignment))
        return; // not an object of allocateObject: ignore it
    deallocate(object - shift);
}

void* GlobalStaticAllocator::operator new(std::size_t size)
{
    return allocateObject(size);
}

void* GlobalStaticAllocator::operator new[](std::size_t size)
{
    return allocateObject(size);
}

void GlobalStaticAllocator::operator delete(void* p)
{
    deallocateObject(p);
}

void GlobalStaticAllocator::operator delete[](void* p)
{
    deallocateObject(p);
}

void* GlobalStaticAllocator::operator new(std::size_t size, GlobalStaticAllocator*)
{
    return allocateObject(size);
}

void* GlobalStaticAllocator::operator new[](std::size_t size, GlobalStaticAllocator*)
{
    return allocateObject(size);
}

void GlobalStaticAllocator::operator delete(void* p, GlobalStaticAllocator*)
{
    deallocateObject(p);
}

void GlobalStaticAllocator::operator delete[](void* p, GlobalStaticAllocator*)
{
    deallocateObject(p);
}

char* GlobalStaticAllocator::ToXML(char* buffer, unsigned int size)
{
    Guard lock;
    Initialize();
    XmlWriter out(buffer, size);
    writeXml(out);
    return buffer;
}

unsigned int GlobalStaticAllocator::toXMLSize()
{
    Guard lock;
    Initialize();
    XmlWriter out(nullptr, 0);
    writeXml(out);
    return out.needed();
}

bool GlobalStaticAllocator::isInvariant()
{
    Guard lock;
    Initialize();
    for (int i = 0; i < SegmentCount; ++i)
    {
        std::uintptr_t start = address(segmentStart(i));
        std::uintptr_t end = start + SegmentSize;
        unsigned nodes = 0;
        for (FreeListNode* node = s_segment[i].head; node != nullptr; node = next(node))
        {
            std::uintptr_t at = address(node);
            if (at < start || at + MinBlockSize > end || node->size < MinBlockSize ||
                at + node->size > end)
                return false;
            if (node->nextOffset != 0 &&
                (node->nextOffset <= node->size || at + node->nextOffset + MinBlockSize > end))
                return false;
            if (++nodes > SegmentSize / MinBlockSize)
                return false;
        }
        if (nodes != s_segment[i].count)
            return false;
    }
    return true;
}

char* GlobalStaticAllocator::getSegmentAddr(int i)
{
    Guard lock;
    Initialize();
    if (i < 0 || i >= SegmentCount)
        return nullptr;
    return segmentStart(i);
}

bool GlobalStaticAllocator::getSegmentFrom(void const* p, int& i)
{
    Guard lock;
    Initialize();
    int found = segmentOf(p);
    if (found < 0)
        return false;
    i = found;
    return true;
}

GlobalStaticAllocator::FreeListNode* GlobalStaticAllocator::getNextFreeListNode(FreeListNode* node)
{
    if (node == nullptr)
        return nullptr;
    Guard lock;
    return next(node);
}

GlobalStaticAllocator::FreeListNode* GlobalStaticAllocator::getFreeListHead(int i)
{
    Guard lock;
    Initialize();
    if (i < 0 || i >= SegmentCount)
        return nullptr;
    return s_segment[i].head;
}

unsigned int GlobalStaticAllocator::getFreeListCount(int i)
{
    Guard lock;
    Initialize();
    if (i < 0 || i >= SegmentCount)
        return 0;
    return s_segment[i].count;
}

unsigned int GlobalStaticAllocator::getFreeSpace(int i)
{
    Guard lock;
    Initialize();
    if (i < 0 || i >= SegmentCount)
        return 0;
    unsigned total = 0;
    for (FreeListNode* node = s_segment[i].head; node != nullptr; node = next(node))
        total += node->size;
    return total;
}

int GlobalStaticAllocator::findBestSegmentForAlloc(unsigned int need, FreeListNode*& prev,
                                                   FreeListNode*& node)
{
    Guard lock;
    Initialize();
    prev = nullptr;
    node = nullptr;

    // Visiting order: by count, fewest first; a stable insertion sort keeps
    // the lower index first among equal counts.
    int order[SegmentCount];
    for (int i = 0; i < SegmentCount; ++i)
    {
        int j = i;
        while (j > 0 && s_segment[order[j - 1]].count > s_segment[i].count)
        {
            order[j] = order[j - 1];
            --j;
        }
        order[j] = i;
    }

    for (int k = 0; k < SegmentCount; ++k)
    {
        int i = order[k];
        FreeListNode* before = nullptr;
        for (FreeListNode* candidate = s_segment[i].head; candidate != nullptr;
             candidate = next(candidate))
        {
            // A node larger by 1-3 bytes is skipped: it would leave a
            // remainder too small to hold a node.
            if (candidate->size == need || candidate->size >= need + MinBlockSize)
            {
                prev = before;
                node = candidate;
                return i;
            }
            before = candidate;
        }
    }
    return -1;
}

int GlobalStaticAllocator::Coalesce(FreeListNode* node)
{
    Guard lock;
    Initialize();
    int i = segmentOf(node);
    if (i < 0)
        return 0;
    int merges = 0;
    for (int step = 0; step < 2 && node != nullptr; ++step)
    {
        if (node->nextOffset != 0 && node->nextOffset == node->size)
        {
            FreeListNode* absorbed = next(node);
            node->size = static_cast<unsigned short>(node->size + absorbed->size);
            node->nextOffset =
                absorbed->nextOffset == 0
                    ? 0
                    : static_cast<unsigned short>(node->nextOffset + absorbed->nextOffset);
            std::memset(absorbed, 0, sizeof *absorbed); // free memory stays zero-filled
            --s_segment[i].count;
            ++merges;
        }
        else
        {
            node = next(node);
        }
    }
    return merges;
}

} // namespace Common
