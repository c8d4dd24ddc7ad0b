#pragma once

#include "common/IString.h"
#include "common/GlobalStaticAllocator.h"
#include "common/String.h"

namespace Common
{

// A sink of bytes. Stream objects are allocated from the memory pool (the
// class-level operator new of GlobalStaticAllocator) and held in
// Common::shared_ptr.
class OutputStream : public GlobalStaticAllocator
{
public:
    virtual ~OutputStream() {}

    virtual bool isOpen() const = 0;
    // Takes `length` bytes; true when all of them were taken.
    virtual bool Accept(char const* bytes, unsigned length) = 0;

    OutputStream& operator<<(string const& text);
    OutputStream& operator<<(istring const& text);
    OutputStream& operator<<(char const* text);
    // Numbers are written in decimal.
    OutputStream& operator<<(int value);
    OutputStream& operator<<(unsigned value);
    OutputStream& operator<<(long value);
    OutputStream& operator<<(unsigned long value);
    OutputStream& operator<<(long long value);
    OutputStream& operator<<(unsigned long long value);
};

} // namespace Common
