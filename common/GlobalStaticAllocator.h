#pragma once

#include <cstddef>
#include <cstdio>

namespace Common
{

// Bytes the foundation has reserved from the heap for good (the memory pool's
// block is counted once, when it is reserved). Changed only under the pool
// lock; read it through LogTotalHeapMemory.
extern unsigned long s_gTotalHeapMemory;

// Returns s_gTotalHeapMemory and, when `out` is given, writes the line
// "TotalHeapMemory: <n>\n" to it. Nothing is written by default (the library
// does not log on its own).
unsigned long LogTotalHeapMemory(std::FILE* out = nullptr);

// The global memory pool.
//
// One block of 10 segments x 65,535 bytes is taken from the global operator new
// on first use and never returned. Segment i starts at pool + i * 65,535.
// Free memory carries its own bookkeeping: a FreeListNode (16-bit size, 16-bit
// distance to the next free node of the same segment, 0 = last) at the start
// of every free block, linked in increasing address order and always fully
// coalesced. Every segment has a head pointer (null when the segment is full)
// and a count of free nodes. An allocated block is a 16-bit header holding
// need - 2 followed by the caller's bytes; need = n + 2, at least 4.
//
// Raw interface: allocate(n) returns null when no segment has room (n larger
// than 65,533 never fits); deallocate(p) ignores a pointer whose block lies in
// no segment, and also (a defensive addition) a pointer whose block would
// overlap a free node or run past its segment, such as a second free of the
// same block. Pointers from allocate() are NOT aligned (segments start at odd
// offsets and headers are 2 bytes): they suit byte buffers.
//
// Objects: a class derives from GlobalStaticAllocator to have its objects
// pooled. Its class-level operator new (every form below) never returns null:
// it takes the object from the pool, aligned to
// __STDCPP_DEFAULT_NEW_ALIGNMENT__ (16 on i386) by asking allocate() for
// size + 16 bytes and keeping the distance to the raw pointer in the byte just
// before the object; when the pool has no room it falls back to the global
// operator new (which throws std::bad_alloc if the heap is exhausted too).
// The class-level operator delete sends each pointer back where it came from:
// into the pool if it lies inside a segment, else to the global operator
// delete. Objects must be released through operator delete, not deallocate().
// The placement forms taking a GlobalStaticAllocator* ignore that pointer (the
// pool is one process-wide pool) and behave like the plain forms.
//
// Speed: outside the pool memory the pool also keeps the segments sorted in
// visiting order and, per segment, a bound no free node exceeds (exact after a
// search found nothing there), so an allocation neither sorts nor walks a
// segment that cannot fit the request. Neither changes which node is taken.
//
// Thread safety: every
// public operation, and every operation of every LocalStaticAllocator pool,
// runs under one process-wide recursive lock (taken and released with one
// atomic operation each when uncontended; a thread that finds it held sleeps
// on a POSIX condition variable), so allocations and releases from several
// threads at once are safe. Guard lets callers hold that
// same lock across several calls (for example to read a consistent state
// through the getters below). The memory handed out is of course not guarded.
//
// Not exception-throwing: no pool operation throws, except the heap fallback of
// the class-level operator new (std::bad_alloc, as a new-expression expects).
class GlobalStaticAllocator
{
public:
    enum
    {
        SegmentCount = 10,
        SegmentSize = 65535,
        PoolSize = SegmentCount * SegmentSize,
        HeaderSize = 2,
        MinBlockSize = 4,
        MaxRequest = SegmentSize - HeaderSize, // 65,533: takes a whole segment
        ObjectAlignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__
    };

    // Stored inside free memory, possibly at an odd address (hence packed).
    struct __attribute__((packed)) FreeListNode
    {
        unsigned short size;       // bytes of this free block
        unsigned short nextOffset; // distance to the next free node; 0 = last
    };

    // Holds the pool lock (recursive) for its lifetime.
    class Guard
    {
    public:
        Guard();
        ~Guard();
        Guard(Guard const&) = delete;
        Guard& operator=(Guard const&) = delete;
    };

    // Idempotent. The first call reserves the pool (counted in
    // s_gTotalHeapMemory), zero-fills it and makes every segment one free node
    // of 65,535 bytes. Called at the start of every public operation.
    static void Initialize();

    // n bytes from the pool (zero-filled), or null when nothing fits.
    static void* allocate(unsigned int n);
    // Returns a block from allocate(); null and foreign pointers are ignored.
    static void deallocate(void* p);

    // Object storage as used by the class-level operators below and by
    // LocalStaticAllocator's fall-back: aligned to ObjectAlignment, from the
    // pool or else from the heap; never null (throws std::bad_alloc only when
    // the heap is exhausted too). deallocateObject sends a pointer to the pool
    // if it lies in a segment, else to the global operator delete; null is
    // ignored.
    static void* allocateObject(std::size_t size);
    static void deallocateObject(void* p);

    static void* operator new(std::size_t size);
    static void* operator new[](std::size_t size);
    static void operator delete(void* p);
    static void operator delete[](void* p);
    static void* operator new(std::size_t size, GlobalStaticAllocator* allocator);
    static void* operator new[](std::size_t size, GlobalStaticAllocator* allocator);
    // Matching placement deletes, called only when a constructor throws.
    static void operator delete(void* p, GlobalStaticAllocator* allocator);
    static void operator delete[](void* p, GlobalStaticAllocator* allocator);

    // Writes the pool's dump ("<MemoryPool><Address>0x...</Address>
    // <Segment><Index>0x0</Index><Address>..</Address><FreeListCount>..
    // </FreeListCount><FreeListNode><Size>..</Size><NextOffset>..</NextOffset>
    // </FreeListNode>...<FreeSpace>..</FreeSpace></Segment>...</MemoryPool>",
    // one line, no blanks, every value "0x%x") into buffer and returns buffer.
    // Unlike the original it never overflows: at most `size` bytes are written
    // including the terminating NUL (the text is cut when it does not fit;
    // with size 0 nothing is written). toXMLSize() gives the size needed.
    static char* ToXML(char* buffer, unsigned int size);
    static unsigned int toXMLSize();

    // True when every segment's free list is well formed: nodes inside the
    // segment, in increasing address order with positive offsets, none shorter
    // than 4 bytes, none touching the next (fully coalesced), and the count
    // equal to the number of nodes. The pool keeps this true at all times.
    static bool isInvariant();

    // Start of segment i (0-9), null for any other i.
    static char* getSegmentAddr(int i);
    // True, with i set to the index, when p lies inside a segment.
    static bool getSegmentFrom(void const* p, int& i);
    // The next free node of the same segment, or null after the last.
    static FreeListNode* getNextFreeListNode(FreeListNode* node);
    // Additional getters (ours): a segment's first free node (null when full),
    // its count of free nodes and its free bytes; 0/null for a bad index.
    static FreeListNode* getFreeListHead(int i);
    static unsigned int getFreeListCount(int i);
    static unsigned int getFreeSpace(int i);

    // The allocation's search: visits the segments by free-node count, fewest first
    // (ties: lowest index), walking each list in address order for the first
    // node whose size equals `need` or is at least need + 4. Returns the
    // segment index with `node` and its predecessor `prev` (null for the
    // head), or -1 with both null when no node fits.
    static int findBestSegmentForAlloc(unsigned int need, FreeListNode*& prev, FreeListNode*& node);

    // The end of a free: from `node`, up to two times, merges a node with
    // the next one when it follows immediately (nextOffset == size); moves on
    // to the next node when it does not. Returns the number of merges. A node
    // outside every segment is ignored (0).
    static int Coalesce(FreeListNode* node);
};

} // namespace Common
