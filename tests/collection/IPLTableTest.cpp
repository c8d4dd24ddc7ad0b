#include "collection/IPLTable.h"

#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using Collection::IPLTable;

namespace
{
std::string text(const Common::istring& s)
{
    return std::string(s.c_str(), s.size());
}

// "type bus:device.function name 'description'" of each entry and the next.
std::string entries(const IPLTable& table)
{
    std::ostringstream out;
    for (unsigned i = 0; i <= table.count(); ++i)
        out << (i ? "; " : "") << table[i].type << ' ' << +table[i].bus << ':' << +table[i].device
            << '.' << +table[i].function << ' ' << text(table[i].name) << " '"
            << text(table[i].description) << "'";
    return out.str();
}

// A copy of the BIOS segment: "$IPL" at `offset`, then 16-byte entries of a
// type word and a location word (bus, device, function bits, and the offset
// of the description in the segment).
struct Segment
{
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(IPLTable::kSegmentSize, 0);

    Segment& table(unsigned offset,
                   std::vector<std::pair<std::uint16_t, std::uint32_t>> const& entries)
    {
        put(offset, std::string("$IPL"));
        for (auto const& entry : entries)
        {
            offset += 16;
            bytes[offset - 12] = static_cast<std::uint8_t>(entry.first);
            bytes[offset - 11] = static_cast<std::uint8_t>(entry.first >> 8);
            for (int i = 0; i < 4; ++i)
                bytes[offset - 4 + i] = static_cast<std::uint8_t>(entry.second >> (8 * i));
        }
        return *this;
    }
    Segment& put(unsigned offset, std::string const& text)
    {
        std::copy(text.begin(), text.end(), bytes.begin() + offset);
        return *this;
    }
};

std::uint32_t location(unsigned bus, unsigned device, unsigned function, unsigned text)
{
    return bus << 24 | device << 19 | function << 16 | text;
}
} // namespace

TEST(IPLTable, EntriesInROMOrderWithNamesAndDescriptions)
{
    Segment segment;
    segment.put(0x8000, std::string("SATA disk", 10)).put(0x8010, std::string("Mystery", 8));
    segment.table(0x6001, {{2, location(0, 31, 2, 0x8000)},
                           {3, location(1, 4, 0, 0x8000)},
                           {128, location(0x80, 3, 7, 0x8010)},
                           {7, 0},
                           {0x0105, 0},
                           {0, 0}, // ends the table
                           {2, 0}});
    // Found at an odd address; two function bits only (18..16 are 0b111); an
    // unnamed type; a type named by its low byte; past the end, an empty entry.
    EXPECT_EQ("2 0:31.2 hd 'SATA disk'; 3 1:4.0 cdrom 'SATA disk'; 128 128:3.3 pxe 'Mystery'; "
              "7 0:0.0  ''; 261 0:0.0 usb ''; 0 0:0.0  ''",
              entries(IPLTable(segment.bytes.data())));
}

TEST(IPLTable, FirstSignatureSixteenEntriesAndTheSegmentsEnd)
{
    Segment many;
    many.table(0x5000, std::vector<std::pair<std::uint16_t, std::uint32_t>>(17, {2, 0}));
    many.table(0x4000, {{3, 0}}).put(0x4000, "$IPX"); // not a signature
    many.table(0x9000, {{3, 0}});
    IPLTable table(many.bytes.data());
    EXPECT_EQ(16u, table.count());
    EXPECT_EQ("hd", text(table[15].name));

    // Only the entries that fit (the second would start at 0xFFFF4), and a
    // description that runs to the end without a NUL is cut there.
    Segment end;
    end.table(0xFFE0, {{5, 0xFFFC}, {5, 0xFFFC}}).put(0xFFFC, "ABCD");
    EXPECT_EQ("5 0:0.0 usb 'ABCD'; 0 0:0.0  ''", entries(IPLTable(end.bytes.data())));
    EXPECT_EQ(0u, IPLTable(Segment().bytes.data()).count());
}

TEST(IPLTable, ReadFromTheBiosSegmentOfMemory)
{
    Sim::Machine machine;
    machine.installIplTable({{3, {1, 4, 0}, "DVD drive"}});
    onSimulatedServer(machine,
                      [](Sim::Machine&) {
                          EXPECT_EQ("3 1:4.0 cdrom 'DVD drive'; 0 0:0.0  ''", entries(IPLTable()));
                      });
}
