#include "sim/PhysicalMemory.h"

#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace Sim
{

PhysicalMemory::PhysicalMemory() : m_file(::memfd_create("tidewell-physical-memory", MFD_CLOEXEC))
{
    void* bytes = MAP_FAILED;
    if (m_file >= 0 && ::ftruncate(m_file, kSize) == 0)
        bytes = ::mmap(nullptr, kSize, PROT_READ | PROT_WRITE | PROT_EXEC, MAP_SHARED, m_file, 0);
    if (bytes == MAP_FAILED)
    {
        if (m_file >= 0)
            ::close(m_file);
        throw std::bad_alloc();
    }
    m_bytes = static_cast<std::uint8_t*>(bytes);
}

PhysicalMemory::~PhysicalMemory()
{
    ::munmap(m_bytes, kSize);
    ::close(m_file);
}

void* PhysicalMemory::map(std::uint64_t address, unsigned length, bool writable,
                          bool executable) const
{
    int protection = PROT_READ | (writable ? PROT_WRITE : 0) | (executable ? PROT_EXEC : 0);
    void* view = ::mmap(nullptr, length, protection, MAP_SHARED, m_file, static_cast<off_t>(address));
    return view == MAP_FAILED ? nullptr : view;
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
