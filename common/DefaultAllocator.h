#pragma once

#include <new>

namespace Common
{

// Node storage of every list and map: plain global operator new/delete.
class DefaultAllocator
{
public:
    void* allocate(unsigned size) { return ::operator new(size); }
    void deallocate(void* p) { ::operator delete(p); }
};

} // namespace Common
