#include "common/system/Memory.h"

#include "platform/Hardware.h"

#include <cstring>
#include <unistd.h>

namespace Common
{
namespace System
{

namespace
{
const unsigned long long kBiosAreaStart = 0xE0000;
const unsigned long long kBiosAreaEnd = 0x100000;

bool insideBiosArea(unsigned long long address, unsigned int length)
{
    return address >= kBiosAreaStart && length <= kBiosAreaEnd - address;
}

bool copyMapped(Platform::Hardware& hardware, int memory, unsigned long long address,
                unsigned char* buffer, unsigned int length)
{
    long pageSize = ::sysconf(_SC_PAGESIZE);
    unsigned long long page = pageSize > 0 ? static_cast<unsigned long long>(pageSize) : 4096;
    unsigned int inPage = static_cast<unsigned int>(address % page);
    if (length > 0xFFFFFFFFu - inPage)
        return false;
    void* mapping = hardware.mapMemory(memory, address - inPage, length + inPage, false, false);
    if (mapping == nullptr)
        return false;
    std::memcpy(buffer, static_cast<unsigned char*>(mapping) + inPage, length);
    hardware.unmapMemory(mapping, length + inPage);
    return true;
}
} // namespace

bool Memory::Read(const unsigned long long& address, unsigned char* buffer,
                  const unsigned int& length)
{
    if (buffer == nullptr)
        return false;
    Platform::Hardware& hardware = Platform::hardware();
    int memory = hardware.openMemory(false);
    if (memory < 0)
        return false;
    bool copied = insideBiosArea(address, length)
                      ? hardware.readMemory(memory, address, buffer, length)
                      : copyMapped(hardware, memory, address, buffer, length);
    hardware.closeMemory(memory);
    return copied;
}

} // namespace System
} // namespace Common
