#include "sim/Machine.h"

#include <stdexcept>

namespace Sim
{

namespace
{
std::vector<std::uint8_t> littleEndian(std::uint32_t value, unsigned bytes)
{
    std::vector<std::uint8_t> out;
    for (unsigned i = 0; i < bytes; ++i)
        out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
    return out;
}

void append(std::vector<std::uint8_t>& to, std::vector<std::uint8_t> const& bytes)
{
    to.insert(to.end(), bytes.begin(), bytes.end());
}

// Sets byte `at` so that bytes [from, from + length) sum to 0 modulo 256.
void checksum(std::vector<std::uint8_t>& bytes, std::size_t from, std::size_t length,
              std::size_t at)
{
    std::uint8_t sum = 0;
    for (std::size_t i = from; i < from + length; ++i)
        sum = static_cast<std::uint8_t>(sum + bytes[i]);
    bytes[at] = static_cast<std::uint8_t>(0x100 - sum);
}
} // namespace

PciFunction& Machine::addFunction(PciLocation at, std::uint16_t vendor, std::uint16_t device,
                                  std::uint8_t baseClass, std::uint8_t subclass)
{
    return m_bridge.add(at, std::make_unique<PciFunction>(vendor, device, baseClass, subclass));
}

PciFunction& Machine::addBridge(PciLocation at, std::uint8_t secondary)
{
    PciFunction& bridge = addFunction(at, 0x8086, 0x244E, 0x06, 0x04);
    bridge.setByte(0x0E, 0x01).setByte(0x18, at.bus).setByte(0x19, secondary);
    return bridge.setByte(0x1A, secondary);
}

NvramController& Machine::addNvramController(PciLocation at, std::uint16_t deviceId)
{
    return m_bridge.add(at, std::make_unique<NvramController>(m_clock, deviceId));
}

void Machine::installSmbios(SmbiosBuilder const& builder, EntryPointPlacement placement)
{
    std::uint16_t length =
        placement.length.value_or(static_cast<std::uint16_t>(builder.table().size()));
    std::uint16_t count = placement.count.value_or(builder.count());

    std::vector<std::uint8_t> entry = {'_', 'S', 'M', '_', 0, 0x1F, 2, 4};
    append(entry, {0xFF, 0, 0, 0, 0, 0, 0, 0});
    append(entry, {'_', 'D', 'M', 'I', '_', 0});
    append(entry, littleEndian(length, 2));
    append(entry, littleEndian(placement.table, 4));
    append(entry, littleEndian(count, 2));
    entry.push_back(0x24);
    checksum(entry, 0x10, 0x0F, 0x15);
    checksum(entry, 0, 0x1F, 0x04);

    m_memory.write(placement.anchor, entry);
    m_memory.write(placement.table, builder.table());
}

void Machine::signVelmar()
{
    m_memory.write(0xFFFEA, std::string("VELMAR"));
}

void Machine::signNvram()
{
    m_memory.write(0xFFFD9, std::string("NVRM"));
}

void Machine::installIplTable(std::vector<IplEntry> const& entries, std::uint32_t address)
{
    const std::uint32_t segment = 0xF0000;
    std::vector<std::uint8_t> table = {'$', 'I', 'P', 'L'};
    std::uint32_t text = address + 4 + 17 * 16;
    for (IplEntry const& entry : entries)
    {
        append(table, littleEndian(entry.type, 2));
        append(table, std::vector<std::uint8_t>(6, 0));
        std::uint32_t where = static_cast<std::uint32_t>(entry.at.bus) << 24 |
                              static_cast<std::uint32_t>(entry.at.device & 0x1F) << 19 |
                              static_cast<std::uint32_t>(entry.at.function & 0x03) << 16 |
                              ((text - segment) & 0xFFFF);
        append(table, littleEndian(where, 4));
        append(table, std::vector<std::uint8_t>(4, 0));
        m_memory.write(text, entry.description + std::string(1, '\0'));
        text += static_cast<std::uint32_t>(entry.description.size() + 1);
    }
    append(table, std::vector<std::uint8_t>(16, 0));
    m_memory.write(address, table);
}

void Machine::addRoutingLine(RoutingLine const& line)
{
    m_hasVlmpci = true;
    m_routingLines.push_back(line);
}

void Machine::addDisk(Disk const& disk)
{
    if (!m_diskNames.insert(disk.name).second)
        throw std::invalid_argument("a second disk named \"" + disk.name + "\"");
    m_disks.push_back(disk);
}

void Machine::recordReboot(RebootCall const& call)
{
    m_reboots.push_back(call);
    if (m_atReboot)
        m_atReboot();
}

void Machine::addRomService(std::uint32_t entry, RomReturn returns, RomService service)
{
    m_rom[entry] = RomEntry{returns, std::move(service)};
    m_memory.write(entry, romStub(*this, entry, returns));
}

Machine::RomEntry const* Machine::romService(std::uint32_t entry) const
{
    auto found = m_rom.find(entry);
    return found == m_rom.end() ? nullptr : &found->second;
}

std::uint32_t Machine::readPort(std::uint16_t port, unsigned width)
{
    if (HostBridge::answers(port))
        return m_bridge.readPort(port, width);
    return HostBridge::allOnes(width);
}

void Machine::writePort(std::uint16_t port, unsigned width, std::uint32_t value)
{
    if (HostBridge::answers(port))
        m_bridge.writePort(port, width, value);
}

} // namespace Sim
