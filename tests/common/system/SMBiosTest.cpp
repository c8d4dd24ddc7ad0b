#include "common/system/SMBios.h"
#include "common/system/SMBiosEntryPoint.h"

#include "tests/support/SimulatedServer.h"
#include "tests/support/Text.h"

#include <vector>

using Common::System::SMBios;
using Common::System::SMBiosEntryPoint;

namespace
{
Sim::SmbiosBuilder fullServer()
{
    Sim::SmbiosBuilder table;
    table.bios("Velmar", "P56", "02/14/2011")
        .system("Velmar", "Corvane Quillon 2U", "CZ1234ABCD")
        .chassis("ASSET-0042")
        .processor("Kestrel")
        .memoryDevice(4096)
        .redundantRomDate("11/30/2010")
        .systemId("ZR0A0725");
    return table;
}

// The table's bytes decoded in this process, the first `length` of them
// (all by default) for at most `count` structures.
struct Decoded
{
    explicit Decoded(Sim::SmbiosBuilder const& builder, int length = -1, unsigned count = 256)
        : bytes(builder.table()),
          smbios(bytes.data(), length < 0 ? bytes.size() : static_cast<unsigned>(length), count)
    {
    }
    std::vector<std::uint8_t> bytes;
    SMBios smbios;
};
} // namespace

// The summary's getters are checked through hardware.nsp.
TEST(SMBios, RecordsAndStringsOfTheTable)
{
    Decoded decoded(fullServer());
    SMBios const& smbios = decoded.smbios;
    ASSERT_TRUE(smbios.supported());
    EXPECT_EQ("Kestrel", text(smbios.GetProcessorManufacturer()));

    unsigned char* system = smbios.GetRecordByType(1);
    ASSERT_NE(nullptr, system);
    EXPECT_EQ(1, system[0]);
    EXPECT_EQ("Velmar", text(smbios.GetString(system, 1)));
    EXPECT_EQ("", text(smbios.GetString(system, 0)));
    EXPECT_EQ("", text(smbios.GetString(system, 4))) << "past the string set";
    EXPECT_EQ("", text(smbios.GetString(system + 1000000, 1))) << "not inside the table";
    EXPECT_EQ(nullptr, smbios.GetRecordByType(2));

    Decoded memory(Sim::SmbiosBuilder().memoryDevice(1024).bios("V", "A", "D").memoryDevice(2048).memoryDevice(8192));
    unsigned char* records[4] = {};
    ASSERT_EQ(3u, memory.smbios.GetRecordByType(17, records, 4));
    EXPECT_EQ(0x04, records[0][0x0D]);
    EXPECT_EQ(0x20, records[2][0x0D]);
    EXPECT_EQ(nullptr, records[3]);
    EXPECT_EQ(2u, memory.smbios.GetRecordByType(17, records, 2));
}

TEST(SMBios, DerivedValuesAndTheirDefaults)
{
    // Total RAM skips flash, drops bit 15 and counts an unknown size as its value.
    EXPECT_EQ(std::to_string(4096 + 2048 + 32767),
              text(Decoded(Sim::SmbiosBuilder()
                              .memoryDevice(4096)
                              .memoryDevice(0x8000 | 2048) // kilobyte granularity, taken as megabytes
                              .memoryDevice(0xFFFF)        // unknown size
                              .memoryDevice(512, 9)        // flash
                              .memoryDevice(0))
                      .smbios.GetTotalRAM()));
    // The processor maker is that of the first populated central processor.
    EXPECT_EQ("AMD", text(Decoded(Sim::SmbiosBuilder()
                                     .processor("Math Co", 4, 0x41)
                                     .processor("Empty", 3, 0x00)
                                     .processor("AMD", 3, 0x41))
                             .smbios.GetProcessorManufacturer()));
    // The other defaults are checked through hardware.nsp.
    EXPECT_EQ("unknown", text(Decoded(Sim::SmbiosBuilder().bios("V", "A", "D"))
                                 .smbios.GetProcessorManufacturer()));
}

TEST(SMBios, ABrokenTableEndsTheWalkAtTheFirstStructureThatDoesNotFit)
{
    Sim::SmbiosBuilder table;
    table.bios("V", "P56", "D").system("Velmar", "Corvane", "SN1").systemId("ZR0A0725");
    int withoutLast = static_cast<int>(table.table().size()) - (5 + 9 + 1);
    int biosOnly = static_cast<int>(Sim::SmbiosBuilder().bios("V", "P56", "D").table().size());

    Decoded stringsCut(table, withoutLast + 7);
    EXPECT_EQ("Corvane", text(stringsCut.smbios.GetProductName()));
    EXPECT_EQ(nullptr, stringsCut.smbios.GetRecordByType(195));
    Decoded headerCut(table, biosOnly + 8);
    EXPECT_EQ("P56", text(headerCut.smbios.GetROMName()));
    EXPECT_EQ("", text(headerCut.smbios.GetProductName()));
    Decoded counted(table, -1, 2);
    EXPECT_EQ("SN1", text(counted.smbios.GetSerialNumber()));
    EXPECT_EQ("", text(counted.smbios.GetSystemID()));

    // A formatted area shorter than its header, or longer than the table; a
    // string set without its closing zeros; a field beyond a short area.
    EXPECT_EQ("", text(Decoded(Sim::SmbiosBuilder().bios("V", "P56", "D").raw({1, 2, 0, 0, 0, 0}).systemId("ZR0A0725"))
                          .smbios.GetSystemID()));
    EXPECT_EQ(nullptr,
              Decoded(Sim::SmbiosBuilder().raw({195, 0xF0, 0, 0, 1, 'x', 0, 0})).smbios.GetRecordByType(195));
    EXPECT_EQ("", text(Decoded(Sim::SmbiosBuilder().raw({195, 5, 0, 0, 1, 'Z', 'R', '0', '7'}))
                          .smbios.GetServerID()));
    std::vector<std::uint8_t> upToStatus(20, 0); // ends just before the status at 0x18
    upToStatus[1] = 3;                           // a central processor
    upToStatus[3] = 1;                           // its maker: string 1
    EXPECT_EQ("unknown", text(Decoded(Sim::SmbiosBuilder().structure(4, upToStatus, {"Kestrel"}))
                                 .smbios.GetProcessorManufacturer()))
        << "the status would be the string's first byte";
}

TEST(SMBios, EntryPointIsFoundAnywhereInTheAreaWithItsFieldsInside)
{
    std::vector<std::uint8_t> area(64, 0);
    const std::uint8_t entry[] = {'_', 'S', 'M', '_', 0, 0x1F, 2, 4, 0, 0, 0, 0, 0, 0, 0, 0,
                                  '_', 'D', 'M', 'I', '_', 0, 0x34, 0x12, 0x00, 0x10, 0x0F, 0x00,
                                  7, 0};
    std::copy(entry, entry + sizeof entry, area.begin() + 3);
    SMBiosEntryPoint found;
    ASSERT_TRUE(SMBiosEntryPoint::Find(area.data(), area.size(), found));
    EXPECT_EQ(0x1234, found.tableLength);
    EXPECT_EQ(0xF1000u, found.tableAddress);
    EXPECT_EQ(7, found.structureCount);
    EXPECT_FALSE(SMBiosEntryPoint::Find(area.data(), 3 + 0x1D, found)) << "fields past the end";
    EXPECT_FALSE(SMBiosEntryPoint::Find(area.data() + 4, area.size() - 4, found)) << "no anchor";
}

TEST(SMBios, TableFoundInMemoryOrNotSupported)
{
    Sim::Machine machine;
    Sim::EntryPointPlacement placement;
    placement.anchor = 0xF7A53;
    placement.table = 0x9C123; // below the BIOS area
    machine.installSmbios(fullServer(), placement);
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      { EXPECT_EQ("CZ1234ABCD", text(SMBios().GetSerialNumber())); });

    Sim::Machine noDevMem, noAnchor, tableOutsideMemory;
    noDevMem.installSmbios(fullServer());
    noDevMem.faults().noPhysicalMemory = true;
    Sim::EntryPointPlacement outside;
    outside.table = 0x7FFF0000;
    tableOutsideMemory.installSmbios(fullServer(), outside);
    for (auto* notSupported : {&noDevMem, &noAnchor, &tableOutsideMemory})
        onSimulatedServer(*notSupported,
                          [](Sim::Machine&)
                          {
                              SMBios smbios;
                              EXPECT_FALSE(smbios.supported());
                              EXPECT_EQ("", text(smbios.GetROMName()));
                              EXPECT_EQ("0", text(smbios.GetTotalRAM()));
                              EXPECT_EQ("unknown", text(smbios.GetProcessorManufacturer()));
                              EXPECT_EQ(nullptr, smbios.GetRecordByType(0));
                          });
}
