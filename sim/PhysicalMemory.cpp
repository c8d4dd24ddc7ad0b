#include "sim/PhysicalMemory.h"

#include <new>
#include <sys/mman.h>

namespace Sim
{

PhysicalMemory::PhysicalMemory()
{
    void* bytes = ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE | PROT_EXEC,
                         MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (bytes == MAP_FAILED)
        throw std::bad_alloc();
    m_bytes = static_cast<std::uint8_t*>(bytes);
}

PhysicalMemory::~PhysicalMemory()
{
    ::munmap(m_bytes, kSize);
}

void PhysicalMemory::write(std::uint64_t address, std::vector<std::uint8_t> const& bytes)
{
    for (std::size_t i = 0; i < bytes.size() && address + i < kSize; ++i)
        m_bytes[address + i] = bytes[i];
}

void PhysicalMemory::write(std::uint64_t address, std::string const& text)
{
    write(address, std::vector<std::uint8_t>(text.begin(), text.end()));
}

std::vector<std::uint8_t> PhysicalMemory::read(std::uint64_t address, std::size_t length) const
{
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < length && address + i < kSize; ++i)
        bytes.push_back(m_bytes[address + i]);
    return bytes;
}

} // namespace Sim
