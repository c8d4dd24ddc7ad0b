#pragma once

namespace Common
{
namespace System
{

// Physical memory, read through the platform's "/dev/mem".
class Memory
{
public:
    // Copies `length` bytes of physical memory at `address` into `buffer`.
    // Ranges wholly inside the BIOS area 0xE0000..0xFFFFF are read; others are
    // mapped page-wise and copied. False when "/dev/mem" cannot be opened or
    // the read or mapping fails (the buffer is then partly undefined).
    static bool Read(const unsigned long long& address, unsigned char* buffer,
                     const unsigned int& length);
};

} // namespace System
} // namespace Common
