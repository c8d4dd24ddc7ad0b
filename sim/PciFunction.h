#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace Sim
{

// One write that reached a function's configuration space, as the bus saw it.
struct RegisterWrite
{
    std::uint8_t offset;
    unsigned width; // bytes
    std::uint32_t value;

    bool operator==(RegisterWrite const& other) const
    {
        return offset == other.offset && width == other.width && value == other.value;
    }
};

// A PCI function of the simulated server: 256 bytes of configuration space
// with read-only bits, and a log of every write in order.
//
// The set* and capability calls describe the device (they bypass the
// read-only bits and are not logged); read and write are what the bus does.
class PciFunction
{
public:
    PciFunction(std::uint16_t vendor, std::uint16_t device, std::uint8_t baseClass,
                std::uint8_t subclass);
    virtual ~PciFunction() = default;

    PciFunction& setByte(std::uint8_t offset, std::uint8_t value);
    PciFunction& setWord(std::uint8_t offset, std::uint16_t value);
    PciFunction& setDword(std::uint8_t offset, std::uint32_t value);
    PciFunction& subsystem(std::uint16_t vendor, std::uint16_t id);
    // Appends a capability with `id` and the given bytes after its two-byte
    // header, and links it into the capability list (status bit 4).
    PciFunction& capability(std::uint8_t id, std::vector<std::uint8_t> const& body);
    // Bits set in `mask` become writable (or read-only) at `offset`.
    PciFunction& writable(std::uint8_t offset, std::uint8_t mask);
    // How many bytes its "/proc/bus/pci" file shows (the kernel shows 64 to
    // unprivileged readers).
    PciFunction& procFileSize(unsigned bytes);

    virtual std::uint32_t read(std::uint8_t offset, unsigned width);
    virtual void write(std::uint8_t offset, unsigned width, std::uint32_t value);

    std::array<std::uint8_t, 256> const& config() const { return m_config; }
    unsigned procFileSize() const { return m_procFileSize; }
    std::vector<RegisterWrite> const& writes() const { return m_writes; }

protected:
    // Stores through the read-only mask without logging.
    void store(std::uint8_t offset, unsigned width, std::uint32_t value);
    std::uint32_t load(std::uint8_t offset, unsigned width) const;

private:
    std::array<std::uint8_t, 256> m_config{};
    std::array<std::uint8_t, 256> m_writable{};
    std::vector<RegisterWrite> m_writes;
    std::uint8_t m_nextCapability = 0x40;
    unsigned m_procFileSize = 256;
};

} // namespace Sim
