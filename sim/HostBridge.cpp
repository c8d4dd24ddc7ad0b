#include "sim/HostBridge.h"

namespace Sim
{

namespace
{
const std::uint16_t kAddressPort = 0xCF8;
const std::uint16_t kDataPort = 0xCFC;
} // namespace

std::uint32_t HostBridge::readPort(std::uint16_t port, unsigned width)
{
    ++m_accesses;
    if (port == kAddressPort && width == 4)
        return m_address;
    std::uint8_t offset = 0;
    PciFunction* function = port >= kDataPort ? selected(port - kDataPort, offset) : nullptr;
    if (function == nullptr || offset + width > 256)
        return allOnes(width);
    return function->read(offset, width);
}

void HostBridge::writePort(std::uint16_t port, unsigned width, std::uint32_t value)
{
    ++m_accesses;
    if (port == kAddressPort && width == 4)
    {
        m_address = value;
        return;
    }
    std::uint8_t offset = 0;
    PciFunction* function = port >= kDataPort ? selected(port - kDataPort, offset) : nullptr;
    if (function != nullptr && offset + width <= 256)
        function->write(offset, width, value);
}

PciFunction* HostBridge::find(PciLocation at) const
{
    auto found = m_functions.find(at);
    return found == m_functions.end() ? nullptr : found->second.get();
}

PciFunction* HostBridge::selected(unsigned lane, std::uint8_t& offset) const
{
    if ((m_address & 0x80000000u) == 0)
        return nullptr;
    PciLocation at;
    at.bus = static_cast<std::uint8_t>(m_address >> 16);
    at.device = static_cast<std::uint8_t>((m_address >> 11) & 0x1F);
    at.function = static_cast<std::uint8_t>((m_address >> 8) & 0x07);
    offset = static_cast<std::uint8_t>((m_address & 0xFC) + lane);
    return find(at);
}

} // namespace Sim
