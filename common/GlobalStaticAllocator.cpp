#include "common/GlobalStaticAllocator.h"

#include <cstdint>
#include <cstring>
#include <ctime>
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
    FreeListNode* head;     // first free node, null when the segment is full
    unsigned short count;   // number of free nodes
    unsigned short largest; // no free node is larger; exact after a failed search
};

// The pool lock: one per process, recursive. Taking it when it is free costs
// one atomic operation and releasing it a plain store, inline (allocation is
// frequent and rarely contended); a thread that finds it held sleeps on
// s_waitCondition. s_lockState: 0 free, 1 held, 2 held and possibly waited
// for. s_lockOwner (currentThread() of the holder, 0 when free) is written
// only by the holder, so a thread reading its own id there holds the lock;
// s_lockDepth is touched by the holder only.
// The release reads the state and stores 0 without an atomic exchange, so a
// waiter that marks the state between the two is not woken: waiters sleep at
// most kWaitSlice at a time and then look again. That costs a contended
// acquisition up to a millisecond, rarely, and spares every release the
// locked instruction that dominated the pool's time.
// Constant-initialized, so usable from any static constructor of any unit.
int s_lockState = 0;
unsigned long s_lockOwner = 0;
unsigned s_lockDepth = 0;
pthread_mutex_t s_waitMutex = PTHREAD_MUTEX_INITIALIZER;
pthread_cond_t s_waitCondition = PTHREAD_COND_INITIALIZER;

char* s_pool = nullptr;
SegmentInfo s_segment[SegmentCount];
// The segments in the order allocation visits them: fewest free nodes first,
// the lower index first among equal counts. Kept sorted as counts change, so
// an allocation never sorts; s_rank[i] is the position of segment i.
int s_order[SegmentCount];
int s_rank[SegmentCount];

// memset, with the string instruction inline instead of a call into the C
// library: for the pool's short blocks the call costs more than the filling,
// several times more under an emulator.
__attribute__((target("inline-all-stringops"))) void zeroFill(char* p, unsigned n)
{
    std::memset(p, 0, n);
}

const long kWaitSliceNanoseconds = 1000000;

void waitForLock()
{
    pthread_mutex_lock(&s_waitMutex);
    // Marked 2 before sleeping, so that the holder's release usually wakes
    // us; the time limit covers the release that did not see the mark.
    while (__atomic_exchange_n(&s_lockState, 2, __ATOMIC_ACQUIRE) != 0)
    {
        timespec until;
        clock_gettime(CLOCK_MONOTONIC, &until);
        until.tv_nsec += kWaitSliceNanoseconds;
        if (until.tv_nsec >= 1000000000L)
        {
            until.tv_nsec -= 1000000000L;
            ++until.tv_sec;
        }
        pthread_cond_clockwait(&s_waitCondition, &s_waitMutex, CLOCK_MONOTONIC, &until);
    }
    pthread_mutex_unlock(&s_waitMutex);
}

void wakeWaiter()
{
    pthread_mutex_lock(&s_waitMutex);
    pthread_cond_signal(&s_waitCondition);
    pthread_mutex_unlock(&s_waitMutex);
}

// The calling thread's identity: the address of its thread control block, as
// pthread_self() gives it, read without a call.
inline unsigned long currentThread()
{
    return reinterpret_cast<unsigned long>(__builtin_thread_pointer());
}

inline void lockPool()
{
    unsigned long self = currentThread();
    if (__atomic_load_n(&s_lockOwner, __ATOMIC_RELAXED) == self)
    {
        ++s_lockDepth;
        return;
    }
    int expected = 0;
    if (!__atomic_compare_exchange_n(&s_lockState, &expected, 1, false, __ATOMIC_ACQUIRE,
                                     __ATOMIC_RELAXED))
        waitForLock();
    __atomic_store_n(&s_lockOwner, self, __ATOMIC_RELAXED);
    s_lockDepth = 1;
}

inline void unlockPool()
{
    if (--s_lockDepth != 0)
        return;
    __atomic_store_n(&s_lockOwner, 0ul, __ATOMIC_RELAXED);
    const bool waited = __atomic_load_n(&s_lockState, __ATOMIC_RELAXED) == 2;
    __atomic_store_n(&s_lockState, 0, __ATOMIC_RELEASE);
    if (waited)
        wakeWaiter();
}

// Holds the pool lock for its scope (Guard without the call across units).
class Held
{
public:
    Held() { lockPool(); }
    ~Held() { unlockPool(); }
    Held(Held const&) = delete;
    Held& operator=(Held const&) = delete;
};

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

// ---- the pool's algorithm; every function below expects the lock held ----

void reservePool()
{
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
        s_segment[i].largest = SegmentSize;
        s_order[i] = i; // equal counts: by index
        s_rank[i] = i;
    }
}

void ensurePool()
{
    if (s_pool == nullptr)
        reservePool();
}

// True when allocation visits segment a before segment b.
bool visitedBefore(int a, int b)
{
    return s_segment[a].count < s_segment[b].count ||
           (s_segment[a].count == s_segment[b].count && a < b);
}

// Changes segment i's count of free nodes by delta and moves the segment to
// its new place in the visiting order.
void changeCount(int i, int delta)
{
    if (delta == 0)
        return;
    s_segment[i].count = static_cast<unsigned short>(s_segment[i].count + delta);
    int k = s_rank[i];
    if (delta < 0)
        while (k > 0 && visitedBefore(i, s_order[k - 1]))
        {
            s_order[k] = s_order[k - 1];
            s_rank[s_order[k]] = k;
            --k;
        }
    else
        while (k + 1 < SegmentCount && visitedBefore(s_order[k + 1], i))
        {
            s_order[k] = s_order[k + 1];
            s_rank[s_order[k]] = k;
            ++k;
        }
    s_order[k] = i;
    s_rank[i] = k;
}

// A free node of segment i is now `size` bytes large.
void noteFreeSize(int i, unsigned size)
{
    if (size > s_segment[i].largest)
        s_segment[i].largest = static_cast<unsigned short>(size);
}

// A node of `size` bytes can hold a block of `need` bytes: exactly, or with a
// remainder large enough to be a node itself (1-3 bytes more is skipped).
bool fits(unsigned size, unsigned need)
{
    return size == need || size >= need + MinBlockSize;
}

int findFit(unsigned need, FreeListNode*& prev, FreeListNode*& node)
{
    prev = nullptr;
    node = nullptr;
    for (int k = 0; k < SegmentCount; ++k)
    {
        int i = s_order[k];
        SegmentInfo& segment = s_segment[i];
        if (need > segment.largest)
            continue; // no node here is large enough: not worth a walk
        FreeListNode* before = nullptr;
        unsigned largest = 0;
        for (FreeListNode* candidate = segment.head; candidate != nullptr;
             candidate = next(candidate))
        {
            if (fits(candidate->size, need))
            {
                prev = before;
                node = candidate;
                return i;
            }
            if (candidate->size > largest)
                largest = candidate->size;
            before = candidate;
        }
        segment.largest = static_cast<unsigned short>(largest); // the whole list was seen
    }
    return -1;
}

void* take(unsigned n)
{
    if (n > static_cast<unsigned>(MaxRequest))
        return nullptr;
    unsigned need = n + HeaderSize;
    if (need < static_cast<unsigned>(MinBlockSize))
        need = MinBlockSize;

    FreeListNode* prev;
    FreeListNode* node;
    int i = findFit(need, prev, node);
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
        changeCount(i, -1);
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

    // Free memory is zero-filled but for the node records at the start of
    // free nodes (release and coalesce clear what they free), so clearing
    // the taken node's record leaves the whole block zero-filled.
    char* block = bytes(node);
    std::memset(node, 0, sizeof *node);
    writeHeader(block, static_cast<unsigned short>(need - HeaderSize));
    return block + HeaderSize;
}

// Merges from node on (see Coalesce) and returns the number of merges; the
// caller lowers the segment's count by that many.
int coalesce(int i, FreeListNode* node)
{
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
            noteFreeSize(i, node->size);
            ++merges;
        }
        else
        {
            node = next(node);
        }
    }
    return merges;
}

void release(void* p)
{
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

    zeroFill(block, length);
    FreeListNode* node = nodeAt(block);
    node->size = static_cast<unsigned short>(length);
    node->nextOffset = following == nullptr ? 0 : distance(block, following);
    if (prev != nullptr)
        prev->nextOffset = distance(prev, block);
    else
        segment.head = node;
    noteFreeSize(i, length);

    int merges = coalesce(i, prev != nullptr ? prev : node);
    changeCount(i, 1 - merges);
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
        Held lock;
        total = s_gTotalHeapMemory;
    }
    if (out != nullptr)
        std::fprintf(out, "TotalHeapMemory: %lu\n", total);
    return total;
}

GlobalStaticAllocator::Guard::Guard()
{
    lockPool();
}

GlobalStaticAllocator::Guard::~Guard()
{
    unlockPool();
}

void GlobalStaticAllocator::Initialize()
{
    Held lock;
    ensurePool();
}

void* GlobalStaticAllocator::allocate(unsigned int n)
{
    Held lock;
    ensurePool();
    return take(n);
}

void GlobalStaticAllocator::deallocate(void* p)
{
    Held lock;
    ensurePool();
    release(p);
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
    Held lock;
    ensurePool();
    if (segmentOf(p) < 0)
    {
        ::operator delete(p);
        return;
    }
    char* object = static_cast<char*>(p);
    unsigned shift = static_cast<unsigned char>(object[-1]);
    if (shift == 0 || shift > static_cast<unsigned>(ObjectAlignment))
        return; // not an object of allocateObject: ignore it
    release(object - shift);
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
    Held lock;
    ensurePool();
    XmlWriter out(buffer, size);
    writeXml(out);
    return buffer;
}

unsigned int GlobalStaticAllocator::toXMLSize()
{
    Held lock;
    ensurePool();
    XmlWriter out(nullptr, 0);
    writeXml(out);
    return out.needed();
}

bool GlobalStaticAllocator::isInvariant()
{
    Held lock;
    ensurePool();
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
    Held lock;
    ensurePool();
    if (i < 0 || i >= SegmentCount)
        return nullptr;
    return segmentStart(i);
}

bool GlobalStaticAllocator::getSegmentFrom(void const* p, int& i)
{
    Held lock;
    ensurePool();
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
    Held lock;
    return next(node);
}

GlobalStaticAllocator::FreeListNode* GlobalStaticAllocator::getFreeListHead(int i)
{
    Held lock;
    ensurePool();
    if (i < 0 || i >= SegmentCount)
        return nullptr;
    return s_segment[i].head;
}

unsigned int GlobalStaticAllocator::getFreeListCount(int i)
{
    Held lock;
    ensurePool();
    if (i < 0 || i >= SegmentCount)
        return 0;
    return s_segment[i].count;
}

unsigned int GlobalStaticAllocator::getFreeSpace(int i)
{
    Held lock;
    ensurePool();
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
    Held lock;
    ensurePool();
    return findFit(need, prev, node);
}

int GlobalStaticAllocator::Coalesce(FreeListNode* node)
{
    Held lock;
    ensurePool();
    int i = segmentOf(node);
    if (i < 0)
        return 0;
    int merges = coalesce(i, node);
    changeCount(i, -merges);
    return merges;
}

} // namespace Common
