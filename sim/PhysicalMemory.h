#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Sim
{

// The simulated server's physical memory: the first MiB, zero-filled, with
// the BIOS area at its top. Addresses beyond it do not exist.
class PhysicalMemory
{
public:
    static constexpr std::uint64_t kSize = 0x100000;

    PhysicalMemory() : m_bytes(kSize, 0) {}

    bool contains(std::uint64_t address, std::uint64_t length) const
    {
        return address <= kSize && length <= kSize - address;
    }
    // Writes outside the memory are cut at its end.
    void write(std::uint64_t address, std::vector<std::uint8_t> const& bytes);
    void write(std::uint64_t address, std::string const& text);
    std::vector<std::uint8_t> read(std::uint64_t address, std::size_t length) const;

    std::uint8_t* at(std::uint64_t address) { return m_bytes.data() + address; }
    std::uint8_t const* begin() const { return m_bytes.data(); }

private:
    std::vector<std::uint8_t> m_bytes;
};

} // namespace Sim
