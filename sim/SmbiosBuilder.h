#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Sim
{

// Builds an SMBIOS structure table: the standard records the module reads
// (types 0, 1, 3, 4, 17), the maker's OEM records 193 and 195, any other
// structure, and raw bytes for broken tables. Handles are numbered in order.
class SmbiosBuilder
{
public:
    SmbiosBuilder& bios(std::string const& vendor, std::string const& version,
                        std::string const& date);
    SmbiosBuilder& system(std::string const& manufacturer, std::string const& product,
                          std::string const& serial);
    SmbiosBuilder& chassis(std::string const& assetTag);
    // `type` 3 is a central processor; status bit 6 means the socket is
    // populated.
    SmbiosBuilder& processor(std::string const& manufacturer, std::uint8_t type = 3,
                             std::uint8_t status = 0x41);
    // `size` is the raw size word; memory type 9 is flash.
    SmbiosBuilder& memoryDevice(std::uint16_t size, std::uint8_t memoryType = 0x18);
    SmbiosBuilder& redundantRomDate(std::string const& date);
    SmbiosBuilder& systemId(std::string const& id);

    // A structure of `type` whose formatted area after the 4-byte header is
    // `fields` (string numbers included), followed by `strings`.
    SmbiosBuilder& structure(std::uint8_t type, std::vector<std::uint8_t> const& fields,
                             std::vector<std::string> const& strings);
    // Bytes appended as they are; they count as one structure.
    SmbiosBuilder& raw(std::vector<std::uint8_t> const& bytes);

    std::vector<std::uint8_t> const& table() const { return m_table; }
    std::uint16_t count() const { return m_count; }

private:
    std::vector<std::uint8_t> m_table;
    std::uint16_t m_count = 0;
};

} // namespace Sim
