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
        .system("Velmar", "Corvane DL380 G7", "CZ1234ABCD")
        .chassis("ASSET-0042")
        .processor("Intel")
        .memoryDevice(4096)
        .redundantRomDate("11/30/2010")
        .systemId("ZR0A0725");
    return table;
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
        EXPECT_EQ("Corvane DL380 G7", str(smbios.GetProductName()));
        EXPECT_EQ("CZ1234ABCD", str(smbios.GetSerialNumber()));
        EXPECT_EQ("ASSET-0042", str(smbios.GetAssetTag()));
        EXPECT_EQ("ZR0A0725", str(smbios.GetSystemID()));
        EXPECT_EQ("0725", str(smbios.GetServerID()));
        EXPECT_EQ("4096", str(smbios.GetTotalRAM()));
        EXPECT_EQ("Intel", str(smbios.GetProcessorManufacturer()));

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
    Sim::SmbiosBuilder table;
    table.memoryDevice(1024).bios("V", "A", "D").memoryDevice(2048).memoryDevice(8192);
    Sim::Machine machine;
    machine.installSmbios(table);
    auto check = [](Sim::Machine&)
    {
        SMBios smbios;
        unsigned char* records[4] = {};
        ASSERT_EQ(3u, smbios.GetRecordByType(17, records, 4));
        EXPECT_EQ(0x04, records[0][0x0D]);
        EXPECT_EQ(0x08, records[1][0x0D]);
        EXPECT_EQ(0x20, records[2][0x0D]);
        EXPECT_EQ(nullptr, records[3]);
        EXPECT_EQ(2u, smbios.GetRecordByType(17, records, 2));
        EXPECT_EQ(0u, smbios.GetRecordByType(17, records, 0));
    };
    onSimulatedServer(machine, check);
}

TEST(SMBios, TotalRamSkipsFlashDropsBit15AndCountsUnknownSizeAsItsValue)
{
    Sim::SmbiosBuilder table;
    table.memoryDevice(4096)
        .memoryDevice(0x8000 | 2048) // kilobyte granularity, taken as megabytes
        .memoryDevice(0xFFFF)        // unknown size
        .memoryDevice(512, 9)        // flash
        .memoryDevice(0);            // empty slot
    Sim::Machine machine;
    machine.installSmbios(table);
    auto check = [](Sim::Machine&)
    { EXPECT_EQ(std::to_string(4096 + 2048 + 32767), str(SMBios().GetTotalRAM())); };
    onSimulatedServer(machine, check);
}

TEST(SMBios, ProcessorMakerIsThatOfTheFirstPopulatedCentralProcessor)
{
    Sim::SmbiosBuilder table;
    table.processor("Math Co", 4, 0x41).processor("Empty", 3, 0x00).processor("AMD", 3, 0x41);
    Sim::Machine machine;
    machine.installSmbios(table);
    auto check = [](Sim::Machine&) { EXPECT_EQ("AMD", str(SMBios().GetProcessorManufacturer())); };
    onSimulatedServer(machine, check);

    Sim::Machine withoutProcessor;
    withoutProcessor.installSmbios(Sim::SmbiosBuilder().bios("V", "A", "D"));
    auto checkWithoutProcessor = [](Sim::Machine&)
    {
        SMBios smbios;
        EXPECT_TRUE(smbios.supported());
        EXPECT_EQ("unknown", str(smbios.GetProcessorManufacturer()));
        EXPECT_EQ("0", str(smbios.GetTotalRAM()));
        EXPECT_EQ("", str(smbios.GetAssetTag()));
    };
    onSimulatedServer(withoutProcessor, checkWithoutProcessor);
}

TEST(SMBios, ServerIdNeedsFourCharacters)
{
    Sim::Machine shortId;
    shortId.installSmbios(Sim::SmbiosBuilder().systemId("ABC"));
    auto checkShortId = [](Sim::Machine&)
    {
        SMBios smbios;
        EXPECT_EQ("ABC", str(smbios.GetSystemID()));
        EXPECT_EQ("", str(smbios.GetServerID()));
    };
    onSimulatedServer(shortId, checkShortId);
}

TEST(SMBios, AnchorOffTheSixteenByteGridIsFound)
{
    Sim::Machine machine;
    Sim::EntryPointPlacement placement;
    placement.anchor = 0xF7A53;
    placement.table = 0x9C123; // below the BIOS area: copied through a mapping
    machine.installSmbios(fullServer(), placement);
    auto check = [](Sim::Machine&)
    {
        SMBios smbios;
        EXPECT_TRUE(smbios.supported());
        EXPECT_EQ("CZ1234ABCD", str(smbios.GetSerialNumber()));
    };
    onSimulatedServer(machine, check);
}

TEST(SMBios, TruncatedTableEndsTheWalkAtTheFirstStructureThatDoesNotFit)
{
    Sim::SmbiosBuilder table;
    table.bios("V", "P56", "D").system("Velmar", "Corvane", "SN1").systemId("ZR0A0725");
    std::size_t withoutLast = table.table().size() - (5 + 9 + 1);

    // The length cuts into the string set of the last structure.
    Sim::Machine cut;
    Sim::EntryPointPlacement shorter;
    shorter.length = static_cast<std::uint16_t>(withoutLast + 7);
    cut.installSmbios(table, shorter);
    auto checkCut = [](Sim::Machine&)
    {
        SMBios smbios;
        EXPECT_TRUE(smbios.supported());
        EXPECT_EQ("Corvane", str(smbios.GetProductName()));
        EXPECT_EQ("", str(smbios.GetSystemID()));
        EXPECT_EQ(nullptr, smbios.GetRecordByType(195));
    };
    onSimulatedServer(cut, checkCut);

    // The length cuts into the formatted area of the second structure.
    Sim::Machine cutEarly;
    Sim::EntryPointPlacement header;
    header.length =
        static_cast<std::uint16_t>(Sim::SmbiosBuilder().bios("V", "P56", "D").table().size() + 8);
    cutEarly.installSmbios(table, header);
    auto checkCutEarly = [](Sim::Machine&)
    {
        SMBios smbios;
        EXPECT_EQ("P56", str(smbios.GetROMName()));
        EXPECT_EQ("", str(smbios.GetProductName()));
    };
    onSimulatedServer(cutEarly, checkCutEarly);

    // The structure count stops the walk before the table's end.
    Sim::Machine fewer;
    Sim::EntryPointPlacement count;
    count.count = 2;
    fewer.installSmbios(table, count);
    auto checkFewer = [](Sim::Machine&)
    {
        SMBios smbios;
        EXPECT_EQ("SN1", str(smbios.GetSerialNumber()));
        EXPECT_EQ("", str(smbios.GetSystemID()));
    };
    onSimulatedServer(fewer, checkFewer);
}

TEST(SMBios, CorruptStructuresEndTheWalkWithoutReadingPastTheTable)
{
    // A formatted area shorter than its own header.
    Sim::Machine tinyHeader;
    tinyHeader.installSmbios(
        Sim::SmbiosBuilder().bios("V", "P56", "D").raw({1, 2, 0, 0, 0, 0}).systemId("ZR0A0725"));
    auto checkTinyHeader = [](Sim::Machine&)
    {
        SMBios smbios;
        EXPECT_EQ("P56", str(smbios.GetROMName()));
        EXPECT_EQ("", str(smbios.GetSystemID()));
    };
    onSimulatedServer(tinyHeader, checkTinyHeader);

    // A formatted area longer than the rest of the table.
    Sim::Machine longHeader;
    longHeader.installSmbios(Sim::SmbiosBuilder().raw({195, 0xF0, 0, 0, 1, 'x', 0, 0}));
    auto checkLongHeader = [](Sim::Machine&) { EXPECT_EQ(nullptr, SMBios().GetRecordByType(195)); };
    onSimulatedServer(longHeader, checkLongHeader);

    // A string set without its closing pair of zeros at the end of the table.
    Sim::Machine openStrings;
    openStrings.installSmbios(Sim::SmbiosBuilder().raw({195, 5, 0, 0, 1, 'Z', 'R', '0', '7'}));
    auto checkOpenStrings = [](Sim::Machine&)
    {
        SMBios smbios;
        EXPECT_EQ("", str(smbios.GetSystemID()));
        EXPECT_EQ("", str(smbios.GetServerID()));
    };
    onSimulatedServer(openStrings, checkOpenStrings);

    // A field beyond a short formatted area is not read.
    Sim::Machine shortProcessor;
    shortProcessor.installSmbios(Sim::SmbiosBuilder().structure(4, {0, 3, 0, 1}, {"Intel"}));
    auto checkShortProcessor = [](Sim::Machine&)
    { EXPECT_EQ("unknown", str(SMBios().GetProcessorManufacturer())); };
    onSimulatedServer(shortProcessor, checkShortProcessor);
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
