#include "sim/SmbiosBuilder.h"

#include <algorithm>

namespace Sim
{

SmbiosBuilder& SmbiosBuilder::bios(std::string const& vendor, std::string const& version,
                                   std::string const& date)
{
    // vendor, version, start segment, release date, ROM size, characteristics
    std::vector<std::uint8_t> fields = {1, 2, 0x00, 0xE0, 3, 0x0F};
    fields.resize(0x12 - 4, 0);
    return structure(0, fields, {vendor, version, date});
}

SmbiosBuilder& SmbiosBuilder::system(std::string const& manufacturer, std::string const& product,
                                     std::string const& serial)
{
    // manufacturer, product, version, serial, UUID, wake-up type
    std::vector<std::uint8_t> fields = {1, 2, 0, 3};
    fields.resize(0x19 - 4, 0);
    return structure(1, fields, {manufacturer, product, serial});
}

SmbiosBuilder& SmbiosBuilder::chassis(std::string const& assetTag)
{
    // manufacturer, type, version, serial, asset tag, states
    std::vector<std::uint8_t> fields = {0, 0x17, 0, 0, 1};
    fields.resize(0x0D - 4, 0);
    return structure(3, fields, {assetTag});
}

SmbiosBuilder& SmbiosBuilder::processor(std::string const& manufacturer, std::uint8_t type,
                                        std::uint8_t status)
{
    // socket, type, family, manufacturer, ..., status at 0x18, upgrade
    std::vector<std::uint8_t> fields(0x1A - 4, 0);
    fields[0x05 - 4] = type;
    fields[0x06 - 4] = 0xB3;
    fields[0x07 - 4] = 1;
    fields[0x18 - 4] = status;
    return structure(4, fields, {manufacturer});
}

SmbiosBuilder& SmbiosBuilder::memoryDevice(std::uint16_t size, std::uint8_t memoryType)
{
    // array handle, error handle, widths, size at 0x0C, ..., type at 0x12
    std::vector<std::uint8_t> fields(0x15 - 4, 0);
    fields[0x0C - 4] = static_cast<std::uint8_t>(size);
    fields[0x0D - 4] = static_cast<std::uint8_t>(size >> 8);
    fields[0x12 - 4] = memoryType;
    return structure(17, fields, {});
}

SmbiosBuilder& SmbiosBuilder::redundantRomDate(std::string const& date)
{
    return structure(193, {0, 1}, {date});
}

SmbiosBuilder& SmbiosBuilder::systemId(std::string const& id)
{
    return structure(195, {1}, {id});
}

SmbiosBuilder& SmbiosBuilder::structure(std::uint8_t type, std::vector<std::uint8_t> const& fields,
                                        std::vector<std::string> const& strings)
{
    std::vector<std::uint8_t> bytes(4 + fields.size());
    bytes[0] = type;
    bytes[1] = static_cast<std::uint8_t>(4 + fields.size());
    bytes[2] = static_cast<std::uint8_t>(m_count);
    bytes[3] = static_cast<std::uint8_t>(m_count >> 8);
    std::copy(fields.begin(), fields.end(), bytes.begin() + 4);
    for (std::string const& text : strings)
    {
        bytes.insert(bytes.end(), text.begin(), text.end());
        bytes.push_back(0);
    }
    if (strings.empty())
        bytes.push_back(0);
    bytes.push_back(0);
    return raw(bytes);
}

SmbiosBuilder& SmbiosBuilder::raw(std::vector<std::uint8_t> const& bytes)
{
    m_table.insert(m_table.end(), bytes.begin(), bytes.end());
    ++m_count;
    return *this;
}

} // namespace Sim
