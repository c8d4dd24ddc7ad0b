#include "collection/IPLTable.h"

#include "tests/support/SimulatedServer.h"

#include <string>
#include <vector>

using Collection::IPLTable;

namespace
{
std::string text(const Common::istring& s)
{
    return std::string(s.c_str(), s.size());
}

// One raw 16-byte entry: type word, location word with a string offset in
// the BIOS segment.
std::vector<std::uint8_t> rawEntry(std::uint16_t type, std::uint32_t location)
{
    std::vector<std::uint8_t> entry(16, 0);
    entry[0] = static_cast<std::uint8_t>(type);
    entry[1] = static_cast<std::uint8_t>(type >> 8);
    for (int i = 0; i < 4; ++i)
        entry[8 + i] = static_cast<std::uint8_t>(location >> (8 * i));
    return entry;
}

std::vector<std::uint8_t> rawTable(std::vector<std::vector<std::uint8_t>> const& entries)
{
    std::vector<std::uint8_t> table = {'$', 'I', 'P', 'L'};
    for (auto const& entry : entries)
        table.insert(table.end(), entry.begin(), entry.end());
    return table;
}
} // namespace

TEST(IPLTable, EntriesInROMOrderWithNamesAndDescriptions)
{
    Sim::Machine machine;
    machine.installIplTable({{2, {0, 31, 2}, "SATA disk"},
                             {3, {1, 4, 0}, "DVD drive"},
                             {128, {0x80, 3, 1}, "Onboard NIC"},
                             {7, {0, 0, 0}, "Mystery"},
                             {0x0105, {0, 29, 3}, "USB key"}});
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          IPLTable table;
                          ASSERT_EQ(5u, table.count());
                          EXPECT_EQ(2, table[0].type);
                          EXPECT_EQ(0, table[0].bus);
                          EXPECT_EQ(31, table[0].device);
                          EXPECT_EQ(2, table[0].function);
                          EXPECT_EQ("hd", text(table[0].name));
                          EXPECT_EQ("SATA disk", text(table[0].description));
                          EXPECT_EQ("cdrom", text(table[1].name));
                          EXPECT_EQ(1, table[1].bus);
                          EXPECT_EQ(4, table[1].device);
                          EXPECT_EQ(0x80, table[2].bus);
                          EXPECT_EQ("pxe", text(table[2].name));
                          EXPECT_EQ("Onboard NIC", text(table[2].description));
                          // A type the names table lacks has no name; a
                          // type is named by its low byte.
                          EXPECT_EQ("", text(table[3].name));
                          EXPECT_EQ("Mystery", text(table[3].description));
                          EXPECT_EQ(0x0105, table[4].type);
                          EXPECT_EQ("usb", text(table[4].name));
                          // Past the end: an empty entry.
                          EXPECT_EQ(0, table[5].type);
                          EXPECT_EQ("", text(table[5].name));
                      });
}

TEST(IPLTable, LocationWordKeepsOnlyTwoFunctionBits)
{
    Sim::Machine machine;
    // Bus 0x12, device 9, function bits 18..16 = 0b111, text at 0xF8000.
    std::uint32_t location = 0x12u << 24 | 9u << 19 | 7u << 16 | 0x8000;
    machine.memory().write(0xF6001, rawTable({rawEntry(1, location), rawEntry(0, 0)}));
    machine.memory().write(0xF8000, std::string("Floppy", 7));
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          IPLTable table;
                          ASSERT_EQ(1u, table.count()) << "found at an odd address";
                          EXPECT_EQ(0x12, table[0].bus);
                          EXPECT_EQ(9, table[0].device);
                          EXPECT_EQ(3, table[0].function);
                          EXPECT_EQ("floppy", text(table[0].name));
                          EXPECT_EQ("Floppy", text(table[0].description));
                      });
}

TEST(IPLTable, FirstSignatureWinsAndSixteenEntriesAtMost)
{
    Sim::Machine machine;
    std::vector<std::vector<std::uint8_t>> many;
    for (int i = 0; i < 17; ++i)
        many.push_back(rawEntry(2, 0x8000));
    machine.memory().write(0xF5000, rawTable(many));
    machine.memory().write(0xF9000, rawTable({rawEntry(3, 0x8000)}));
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          IPLTable table;
                          EXPECT_EQ(16u, table.count());
                          EXPECT_EQ("hd", text(table[15].name));
                          EXPECT_EQ(0, table[16].type);
                      });
}

TEST(IPLTable, TablesThatCannotBeReadAreEmpty)
{
    Sim::Machine withoutTable;
    onSimulatedServer(withoutTable, [](Sim::Machine&) { EXPECT_EQ(0u, IPLTable().count()); });

    Sim::Machine withoutMemory;
    withoutMemory.installIplTable({{2, {}, "disk"}});
    withoutMemory.faults().noPhysicalMemory = true;
    onSimulatedServer(withoutMemory, [](Sim::Machine&) { EXPECT_EQ(0u, IPLTable().count()); });

    // A table at the segment's very end: only the entries that fit (the
    // second would start at 0xFFFF4), and a description that runs to the end
    // without a NUL is cut there.
    Sim::Machine atTheEnd;
    atTheEnd.memory().write(0xFFFE0, rawTable({rawEntry(5, 0xFFFC)}));
    atTheEnd.memory().write(0xFFFF4, std::string(8, '\xAA') + "ABCD");
    onSimulatedServer(atTheEnd,
                      [](Sim::Machine&)
                      {
                          IPLTable table;
                          ASSERT_EQ(1u, table.count());
                          EXPECT_EQ("ABCD", text(table[0].description));
                      });
}
