#pragma once

#include <new>

// An allocator for the module's containers that counts the blocks it has
// handed out and not yet taken back. There is one count for the whole test
// program: every test that uses it gives back all it took, so each starts
// from 0.
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
