#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Sim
{

// The simulated server's physical memory: the first MiB, zero-filled, with
// the BIOS area at its top. Addresses beyond it do not exist.
//
// The bytes live in a memory file: the machine's own view is readable,
// writable and executable (the ROM services are real x86 code stubs in this
// memory, entered through the ROM call), and map() gives further views of
// the same bytes with the protection a mapping of "/dev/mem" would have, so
// a write through a read-only view faults as on a server.
class PhysicalMemory
{
public:
    static constexpr std::uint64_t kSize = 0x100000;

    PhysicalMemory();
    ~PhysicalMemory();
    PhysicalMemory(PhysicalMemory const&) = delete;
    PhysicalMemory& operator=(PhysicalMemory const&) = delete;

    bool contains(std::uint64_t address, std::uint64_t length) const
    {
        return address <= kSize && length <= kSize - address;
    }
    // Writes outside the memory are cut at its end.
    void write(std::uint64_t address, std::vector<std::uint8_t> const& bytes);
    void write(std::uint64_t address, std::string const& text);
    std::vector<std::uint8_t> read(std::uint64_t address, std::size_t length) const;

    std::uint8_t* at(std::uint64_t address) { return m_bytes + address; }
    std::uint8_t const* begin() const { return m_bytes; }
    // A view of `length` bytes from the page-aligned `address`, released with
    // munmap; null when the memory file cannot be mapped.
    void* map(std::uint64_t address, unsigned length, bool writable, bool executable) const;

private:
    int m_file;
    std::uint8_t* m_bytes;
};

} // namespace Sim
