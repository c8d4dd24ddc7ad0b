#include "sim/PciFunction.h"

namespace Sim
{

PciFunction::PciFunction(std::uint16_t vendor, std::uint16_t device, std::uint8_t baseClass,
                         std::uint8_t subclass)
{
    m_writable.fill(0xFF);
    // Identification, status, class, header type, subsystem and capability
    // pointer are read-only, as on real functions.
    for (std::uint8_t offset : {0x00, 0x01, 0x02, 0x03, 0x06, 0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0E,
                                0x2C, 0x2D, 0x2E, 0x2F, 0x34})
        m_writable[offset] = 0;
    setWord(0x00, vendor);
    setWord(0x02, device);
    setByte(0x0B, baseClass);
    setByte(0x0A, subclass);
}

PciFunction& PciFunction::setByte(std::uint8_t offset, std::uint8_t value)
{
    m_config[offset] = value;
    return *this;
}

PciFunction& PciFunction::setWord(std::uint8_t offset, std::uint16_t value)
{
    setByte(offset, static_cast<std::uint8_t>(value));
    return setByte(static_cast<std::uint8_t>(offset + 1), static_cast<std::uint8_t>(value >> 8));
}

PciFunction& PciFunction::setDword(std::uint8_t offset, std::uint32_t value)
{
    setWord(offset, static_cast<std::uint16_t>(value));
    return setWord(static_cast<std::uint8_t>(offset + 2), static_cast<std::uint16_t>(value >> 16));
}

PciFunction& PciFunction::subsystem(std::uint16_t vendor, std::uint16_t id)
{
    setWord(0x2C, vendor);
    return setWord(0x2E, id);
}

PciFunction& PciFunction::capability(std::uint8_t id, std::vector<std::uint8_t> const& body)
{
    std::uint8_t at = m_nextCapability;
    setByte(at, id);
    setByte(static_cast<std::uint8_t>(at + 1), 0);
    for (std::size_t i = 0; i < body.size(); ++i)
        setByte(static_cast<std::uint8_t>(at + 2 + i), body[i]);
    // Link at the end of the list.
    if ((m_config[0x06] & 0x10) == 0)
    {
        setByte(0x06, m_config[0x06] | 0x10);
        setByte(0x34, at);
    }
    else
    {
        std::uint8_t last = m_config[0x34];
        while (m_config[last + 1] != 0)
            last = m_config[last + 1];
        setByte(static_cast<std::uint8_t>(last + 1), at);
    }
    m_nextCapability = static_cast<std::uint8_t>((at + 2 + body.size() + 3) & ~3u);
    return *this;
}

PciFunction& PciFunction::writable(std::uint8_t offset, std::uint8_t mask)
{
    m_writable[offset] = mask;
    return *this;
}

PciFunction& PciFunction::procFileSize(unsigned bytes)
{
    m_procFileSize = bytes;
    return *this;
}

std::uint32_t PciFunction::read(std::uint8_t offset, unsigned width)
{
    return load(offset, width);
}

void PciFunction::write(std::uint8_t offset, unsigned width, std::uint32_t value)
{
    m_writes.push_back({offset, width, value});
    store(offset, width, value);
}

void PciFunction::store(std::uint8_t offset, unsigned width, std::uint32_t value)
{
    for (unsigned i = 0; i < width && offset + i < 256; ++i)
    {
        std::uint8_t& byte = m_config[offset + i];
        std::uint8_t mask = m_writable[offset + i];
        std::uint8_t incoming = static_cast<std::uint8_t>(value >> (8 * i));
        byte = static_cast<std::uint8_t>((byte & ~mask) | (incoming & mask));
    }
}

std::uint32_t PciFunction::load(std::uint8_t offset, unsigned width) const
{
    std::uint32_t value = 0;
    for (unsigned i = 0; i < width; ++i)
    {
        std::uint32_t byte = offset + i < 256 ? m_config[offset + i] : 0xFF;
        value |= byte << (8 * i);
    }
    return value;
}

} // namespace Sim
