#include "common/system/SMBios.h"

#include "tests/support/SimulatedServer.h"

using Common::System::SMBios;

namespace
{
std::string str(Common::string const& s)
{
    return std::string(s.c_str(), s.size());
}

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

// Runs body(smbios) on a server whose tables are `tables`, placed by `placement`.
template <class Body>
void withTables(Sim::SmbiosBuilder const& tables, Body body,
                Sim::EntryPointPlacement placement = {})
{
    Sim::Machine machine;
    machine.installSmbios(tables, placement);
    onSimulatedServer(machine,
                      [&](Sim::Machine&)
                      {
                          SMBios smbios;
                          body(smbios);
                      });
}
} // namespace

TEST(SMBios, GettersAnswerFromStandardAndOemRecords)
{
    Sim::Machine machine;
    machine.installSmbios(fullServer());
    auto check = [](Sim::Machine&)
    {
        SMBios smbios;
        ASSERT_TRUE(smbios.supported());
        EXPECT_EQ("P56", str(smbios.GetROMName()));
        EXPECT_EQ("02/14/2011", str(smbios.GetROMDate()));
        EXPECT_EQ("11/30/2010", str(smbios.GetRedundantROMDate()));
        EXPECT_EQ("Corvane Quillon 2U", str(smbios.GetProductName()));
        EXPECT_EQ("CZ1234ABCD", str(smbios.GetSerialNumber()));
        EXPECT_EQ("ASSET-0042", str(smbios.GetAssetTag()));
        EXPECT_EQ("ZR0A0725", str(smbios.GetSystemID()));
        EXPECT_EQ("0725", str(smbios.GetServerID()));
        EXPECT_EQ("4096", str(smbios.GetTotalRAM()));
        EXPECT_EQ("Kestrel", str(smbios.GetProcessorManufacturer()));

        unsigned char* system = smbios.GetRecordByType(1);
        ASSERT_NE(nullptr, system);
        EXPECT_EQ(1, system[0]);
        EXPECT_EQ("Velmar", str(smbios.GetString(system, 1)));
        EXPECT_EQ("", str(smbios.GetString(system, 0)));
        EXPECT_EQ("", str(smbios.GetString(system, 4))) << "past the string set";
        EXPECT_EQ("", str(smbios.GetString(system + 1000000, 1))) << "not inside the table";
        EXPECT_EQ(nullptr, smbios.GetRecordByType(2));
    };
    onSimulatedServer(machine, check);
}

TEST(SMBios, RecordsOfATypeComeInTableOrderUpToTheLimit)
{
    withTables(Sim::SmbiosBuilder()
                   .memoryDevice(1024)
                   .bios("V", "A", "D")
                   .memoryDevice(2048)
                   .memoryDevice(8192),
               [](SMBios& smbios)
               {
                   unsigned char* records[4] = {};
                   ASSERT_EQ(3u, smbios.GetRecordByType(17, records, 4));
                   EXPECT_EQ(0x04, records[0][0x0D]);
                   EXPECT_EQ(0x08, records[1][0x0D]);
                   EXPECT_EQ(0x20, records[2][0x0D]);
                   EXPECT_EQ(nullptr, records[3]);
                   EXPECT_EQ(2u, smbios.GetRecordByType(17, records, 2));
                   EXPECT_EQ(0u, smbios.GetRecordByType(17, records, 0));
               });
}

TEST(SMBios, DerivedValuesAndTheirDefaults)
{
    // Total RAM skips flash, drops bit 15 and counts an unknown size as its value.
    withTables(Sim::SmbiosBuilder()
                   .memoryDevice(4096)
                   .memoryDevice(0x8000 | 2048) // kilobyte granularity, taken as megabytes
                   .memoryDevice(0xFFFF)        // unknown size
                   .memoryDevice(512, 9)        // flash
                   .memoryDevice(0),            // empty slot
               [](SMBios& smbios)
               { EXPECT_EQ(std::to_string(4096 + 2048 + 32767), str(smbios.GetTotalRAM())); });
    // The processor maker is that of the first populated central processor.
    withTables(Sim::SmbiosBuilder()
                   .processor("Math Co", 4, 0x41)
                   .processor("Empty", 3, 0x00)
                   .processor("AMD", 3, 0x41),
               [](SMBios& smbios) { EXPECT_EQ("AMD", str(smbios.GetProcessorManufacturer())); });
    withTables(Sim::SmbiosBuilder().bios("V", "A", "D"),
               [](SMBios& smbios)
               {
                   EXPECT_TRUE(smbios.supported());
                   EXPECT_EQ("unknown", str(smbios.GetProcessorManufacturer()));
                   EXPECT_EQ("0", str(smbios.GetTotalRAM()));
                   EXPECT_EQ("", str(smbios.GetAssetTag()));
               });
    // The server id needs four characters.
    withTables(Sim::SmbiosBuilder().systemId("ABC"),
               [](SMBios& smbios)
               {
                   EXPECT_EQ("ABC", str(smbios.GetSystemID()));
                   EXPECT_EQ("", str(smbios.GetServerID()));
               });
}

TEST(SMBios, AnchorOffTheSixteenByteGridIsFound)
{
    Sim::EntryPointPlacement placement;
    placement.anchor = 0xF7A53;
    placement.table = 0x9C123; // below the BIOS area: copied through a mapping
    withTables(
        fullServer(),
        [](SMBios& smbios)
        {
            EXPECT_TRUE(smbios.supported());
            EXPECT_EQ("CZ1234ABCD", str(smbios.GetSerialNumber()));
        },
        placement);
}

TEST(SMBios, TruncatedTableEndsTheWalkAtTheFirstStructureThatDoesNotFit)
{
    Sim::SmbiosBuilder table;
    table.bios("V", "P56", "D").system("Velmar", "Corvane", "SN1").systemId("ZR0A0725");
    std::size_t withoutLast = table.table().size() - (5 + 9 + 1);

    // The length cuts into the string set of the last structure.
    Sim::EntryPointPlacement shorter;
    shorter.length = static_cast<std::uint16_t>(withoutLast + 7);
    withTables(
        table,
        [](SMBios& smbios)
        {
            EXPECT_TRUE(smbios.supported());
            EXPECT_EQ("Corvane", str(smbios.GetProductName()));
            EXPECT_EQ("", str(smbios.GetSystemID()));
            EXPECT_EQ(nullptr, smbios.GetRecordByType(195));
        },
        shorter);

    // The length cuts into the formatted area of the second structure.
    Sim::EntryPointPlacement header;
    header.length =
        static_cast<std::uint16_t>(Sim::SmbiosBuilder().bios("V", "P56", "D").table().size() + 8);
    withTables(
        table,
        [](SMBios& smbios)
        {
            EXPECT_EQ("P56", str(smbios.GetROMName()));
            EXPECT_EQ("", str(smbios.GetProductName()));
        },
        header);

    // The structure count stops the walk before the table's end.
    Sim::EntryPointPlacement count;
    count.count = 2;
    withTables(
        table,
        [](SMBios& smbios)
        {
            EXPECT_EQ("SN1", str(smbios.GetSerialNumber()));
            EXPECT_EQ("", str(smbios.GetSystemID()));
        },
        count);
}

TEST(SMBios, CorruptStructuresEndTheWalkWithoutReadingPastTheTable)
{
    // A formatted area shorter than its own header.
    withTables(
        Sim::SmbiosBuilder().bios("V", "P56", "D").raw({1, 2, 0, 0, 0, 0}).systemId("ZR0A0725"),
        [](SMBios& smbios)
        {
            EXPECT_EQ("P56", str(smbios.GetROMName()));
            EXPECT_EQ("", str(smbios.GetSystemID()));
        });
    // A formatted area longer than the rest of the table.
    withTables(Sim::SmbiosBuilder().raw({195, 0xF0, 0, 0, 1, 'x', 0, 0}),
               [](SMBios& smbios) { EXPECT_EQ(nullptr, smbios.GetRecordByType(195)); });
    // A string set without its closing pair of zeros at the end of the table.
    withTables(Sim::SmbiosBuilder().raw({195, 5, 0, 0, 1, 'Z', 'R', '0', '7'}),
               [](SMBios& smbios)
               {
                   EXPECT_EQ("", str(smbios.GetSystemID()));
                   EXPECT_EQ("", str(smbios.GetServerID()));
               });
    // A field beyond a short formatted area is not read.
    withTables(Sim::SmbiosBuilder().structure(4, {0, 3, 0, 1}, {"Kestrel"}), [](SMBios& smbios)
               { EXPECT_EQ("unknown", str(smbios.GetProcessorManufacturer())); });
}

TEST(SMBios, NotSupportedWithoutDevMemAnchorOrReadableTable)
{
    auto expectNotSupported = [](Sim::Machine&)
    {
        SMBios smbios;
        EXPECT_FALSE(smbios.supported());
        EXPECT_EQ("", str(smbios.GetROMName()));
        EXPECT_EQ("", str(smbios.GetServerID()));
        EXPECT_EQ("0", str(smbios.GetTotalRAM()));
        EXPECT_EQ("unknown", str(smbios.GetProcessorManufacturer()));
        EXPECT_EQ(nullptr, smbios.GetRecordByType(0));
    };

    Sim::Machine noDevMem;
    noDevMem.installSmbios(fullServer());
    noDevMem.faults().noPhysicalMemory = true;
    onSimulatedServer(noDevMem, expectNotSupported);

    Sim::Machine noAnchor;
    onSimulatedServer(noAnchor, expectNotSupported);

    Sim::Machine tableOutsideMemory;
    Sim::EntryPointPlacement outside;
    outside.table = 0x7FFF0000;
    tableOutsideMemory.installSmbios(fullServer(), outside);
    onSimulatedServer(tableOutsideMemory, expectNotSupported);

    Sim::Machine anchorAtTheEnd;
    Sim::EntryPointPlacement last;
    last.anchor = 0xFFFF0; // its fields would lie past the BIOS area
    anchorAtTheEnd.installSmbios(fullServer(), last);
    onSimulatedServer(anchorAtTheEnd, expectNotSupported);
}
