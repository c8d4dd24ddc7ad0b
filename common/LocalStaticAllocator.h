#pragma once

#include "common/GlobalStaticAllocator.h"

#include <cstddef>
#include <cstdint>

namespace Common
{

// Storage of one per-class pool: N slots, each large and aligned enough for a
// T (and for the pointer that links a free slot). Instantiated only from the
// allocator's operator bodies, where T is complete. Static storage, zero- and
// constant-initialized, never destroyed: usable at any time of the process's
// life, including from static constructors and destructors. All members are
// used under GlobalStaticAllocator's lock.
template <class T, unsigned N> class LocalStaticPool
{
public:
    static constexpr std::size_t SlotAlignment = alignof(T) > alignof(void*) ? alignof(T)
                                                                             : alignof(void*);
    static constexpr std::size_t SlotSize =
        ((sizeof(T) > sizeof(void*) ? sizeof(T) : sizeof(void*)) + SlotAlignment - 1) /
        SlotAlignment * SlotAlignment;

    // A free slot, or null when all N are in use.
    static void* take()
    {
        if (s_free != nullptr)
        {
            void* slot = s_free;
            s_free = *static_cast<void**>(slot);
            ++s_inUse;
            return slot;
        }
        if (s_fresh < N)
        {
            void* slot = s_storage + s_fresh * SlotSize;
            ++s_fresh;
            ++s_inUse;
            return slot;
        }
        return nullptr;
    }

    // True when p is a slot of this pool (the slot is then free again).
    static bool give(void* p)
    {
        if (!contains(p))
            return false;
        *static_cast<void**>(p) = s_free;
        s_free = p;
        --s_inUse;
        return true;
    }

    // True when p is the start of one of the N slots.
    static bool contains(void const* p)
    {
        std::uintptr_t at = reinterpret_cast<std::uintptr_t>(p);
        std::uintptr_t base = reinterpret_cast<std::uintptr_t>(s_storage);
        return at >= base && at - base < N * SlotSize && (at - base) % SlotSize == 0;
    }

    static unsigned inUse() { return s_inUse; }

private:
    alignas(SlotAlignment) static unsigned char s_storage[N * SlotSize];
    static void* s_free;     // slots given back, linked through their first word
    static unsigned s_fresh; // slots [0, s_fresh) have been handed out at least once
    static unsigned s_inUse;
};

template <class T, unsigned N>
alignas(LocalStaticPool<T, N>::SlotAlignment) unsigned char LocalStaticPool<
    T, N>::s_storage[N * LocalStaticPool<T, N>::SlotSize];
template <class T, unsigned N> void* LocalStaticPool<T, N>::s_free = nullptr;
template <class T, unsigned N> unsigned LocalStaticPool<T, N>::s_fresh = 0;
template <class T, unsigned N> unsigned LocalStaticPool<T, N>::s_inUse = 0;

// A per-class pool, used as a base class:
//     class Element : public Common::LocalStaticAllocator<Element, 200, 8> { ... };
// It adds no data members: it only gives T its class-level
// operator new(size_t) and operator delete(void*, size_t).
//
// Policy 8 (the only policy there is):
//  1. An object comes from T's own pool of N slots of sizeof(T) (static
//     storage, reserved with the program, never freed) while a slot is free.
//  2. When all N slots are in use (or the object is larger than a slot, as for
//     a class derived from T), it comes from the global pool
//     (GlobalStaticAllocator, through allocateObject, aligned like the heap).
//  3. When the global pool has no room either, it comes from the heap (global
//     operator new); only then can operator new throw std::bad_alloc. It never
//     returns null.
// operator delete returns each object to where it came from: its slot if the
// pointer is one of the N slots, else the global pool if it lies in one of its
// segments, else the global operator delete. Deleting null does nothing.
// Slots are reused most recently freed first.
//
// Thread safety (our choice): every operation runs under the one process-wide
// pool lock (GlobalStaticAllocator::Guard), shared by the global pool and all
// per-class pools, so objects may be created and deleted from several threads
// at once.
template <class T, unsigned N, int Policy> class LocalStaticAllocator
{
    static_assert(Policy == 8, "LocalStaticAllocator implements only policy 8");
    static_assert(N > 0, "a per-class pool needs at least one slot");

    typedef LocalStaticPool<T, N> Pool;

public:
    static void* operator new(std::size_t size)
    {
        GlobalStaticAllocator::Guard lock;
        if (size <= Pool::SlotSize)
        {
            void* slot = Pool::take();
            if (slot != nullptr)
                return slot;
        }
        return GlobalStaticAllocator::allocateObject(size);
    }

    static void operator delete(void* p, std::size_t)
    {
        if (p == nullptr)
            return;
        GlobalStaticAllocator::Guard lock;
        if (!Pool::give(p))
            GlobalStaticAllocator::deallocateObject(p);
    }

    // Observers (ours), e.g. for tests: the number of slots, the number in
    // use, and whether p is one of this class's slots.
    static unsigned localCapacity() { return N; }
    static unsigned localInUse()
    {
        GlobalStaticAllocator::Guard lock;
        return Pool::inUse();
    }
    static bool isLocal(void const* p) { return Pool::contains(p); }
};

} // namespace Common
