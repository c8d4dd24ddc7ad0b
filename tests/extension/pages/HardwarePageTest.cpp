#include "PageRunner.h"

#include "sim/RomServices.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <string>

using TestSupport::runPage;

namespace
{
Sim::SmbiosBuilder fullTables()
{
    Sim::SmbiosBuilder tables;
    tables.bios("Velmar", "VQ14", "05/05/2011")
        .system("Velmar", "Corvane \"Quillon\" 2U", "CZ2113ABCD")
        .chassis("ASSET-0042")
        .processor("Kestrel")
        .memoryDevice(8192)
        .memoryDevice(8192)
        .memoryDevice(4, 0x09) // flash: not counted
        .redundantRomDate("12/01/2010")
        .systemId("ZR0A0725");
    return tables;
}

std::string summary(const char* environmentVariables, const char* managementProcessor)
{
    return std::string("{\"ErrorCode\":0,\"EVSupport\":\"") + environmentVariables +
           "\",\"WD100Support\":\"" + managementProcessor +
           "\",\"ROMName\":\"VQ14\",\"ROMDate\":\"05/05/2011\","
           "\"RedundantROMDate\":\"12/01/2010\",\"ProductName\":\"Corvane \"Quillon\" 2U\","
           "\"ServerID\":\"0725\",\"SystemID\":\"ZR0A0725\",\"SerialNumber\":\"CZ2113ABCD\","
           "\"AssetTag\":\"ASSET-0042\",\"TotalRAM\":\"16384\"}";
}
} // namespace

TEST(HardwarePage, ServerWithEnvironmentVariablesDoesNotAskTheManagementProcessor)
{
    Sim::Machine machine;
    machine.installSmbios(fullTables());
    Sim::RomServices::addStandardRom(machine);
    machine.environment().set("RXHIPL", {1, 2, 3});
    machine.addManagementController();
    auto check = [](Sim::Machine& machine)
    {
        EXPECT_EQ(summary("Yes", "No"), runPage("hardware.nsp", "Command=Query"));
        EXPECT_TRUE(machine.managementController()->requests().empty());
        EXPECT_EQ("", runPage("hardware.nsp", "Command=Inventory"));
        EXPECT_EQ("", runPage("hardware.nsp", ""));
    };
    onSimulatedServer(machine, check);
}

TEST(HardwarePage, ServerWithoutEnvironmentVariablesAsksTheManagementProcessor)
{
    Sim::Machine present;
    present.installSmbios(fullTables());
    present.addManagementController();
    auto withProcessor = [](Sim::Machine& machine)
    {
        EXPECT_EQ(summary("No", "Yes"), runPage("hardware.nsp", "command=query"));
        ASSERT_FALSE(machine.managementController()->requests().empty());
        EXPECT_EQ(0x06, machine.managementController()->requests()[0].netfn);
        EXPECT_EQ(0x01, machine.managementController()->requests()[0].cmd);
    };
    onSimulatedServer(present, withProcessor);

    Sim::Machine absent;
    absent.installSmbios(fullTables());
    auto withoutProcessor = [](Sim::Machine&)
    { EXPECT_EQ(summary("No", "No"), runPage("hardware.nsp", "Command=Query")); };
    onSimulatedServer(absent, withoutProcessor);

    // Records that are missing answer "".
    Sim::Machine sparse;
    sparse.installSmbios(Sim::SmbiosBuilder().bios("Velmar", "P70", "01/02/2012").systemId("725"));
    auto missingRecords = [](Sim::Machine&)
    {
        EXPECT_EQ("{\"ErrorCode\":0,\"EVSupport\":\"No\",\"WD100Support\":\"No\","
                  "\"ROMName\":\"P70\",\"ROMDate\":\"01/02/2012\",\"RedundantROMDate\":\"\","
                  "\"ProductName\":\"\",\"ServerID\":\"\",\"SystemID\":\"725\","
                  "\"SerialNumber\":\"\",\"AssetTag\":\"\",\"TotalRAM\":\"0\"}",
                  runPage("hardware.nsp", "Command=Query"));
    };
    onSimulatedServer(sparse, missingRecords);
}

TEST(HardwarePage, WithoutSmbiosEveryCommandFails)
{
    Sim::Machine machine;
    Sim::RomServices::addStandardRom(machine);
    machine.addManagementController();
    auto check = [](Sim::Machine&)
    {
        EXPECT_EQ("{\"ErrorCode\":1}", runPage("hardware.nsp", "Command=Query"));
        EXPECT_EQ("{\"ErrorCode\":1}", runPage("hardware.nsp", "Command=Inventory"));
    };
    onSimulatedServer(machine, check);
}
