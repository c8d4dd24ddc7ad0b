#include "tests/support/PageRun.h"

#include "sim/RomServices.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using TestSupport::runPage;

namespace
{
void fullTables(Sim::Machine& machine)
{
    machine.installSmbios(Sim::SmbiosBuilder()
                              .bios("Velmar", "VQ14", "05/05/2011")
                              .system("Velmar", "Corvane \"Quillon\" 2U", "CZ2113ABCD")
                              .chassis("ASSET-0042")
                              .processor("Kestrel")
                              .memoryDevice(8192)
                              .memoryDevice(8192)
                              .memoryDevice(4, 0x09) // flash: not counted
                              .redundantRomDate("12/01/2010")
                              .systemId("ZR0A0725"));
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

// The management processor is probed (Get Device ID) only on a server
// without the ROM's environment variables.
TEST(HardwarePage, SummaryFromTheTablesAndWhichInterfacesTheServerOffers)
{
    const struct
    {
        bool rom, controller, tables;
        std::string answer;
        long probes;
    } cases[] = {
        {true, true, true, summary("Yes", "No"), 0},
        {false, true, true, summary("No", "Yes"), 1},
        {false, false, true, summary("No", "No"), 0},
        {true, true, false, "{\"ErrorCode\":1}", 0},
    };
    for (auto const& c : cases)
    {
        Sim::Machine machine;
        if (c.rom)
        {
            Sim::RomServices::addStandardRom(machine);
            machine.environment().set("RXHIPL", {1, 2, 3});
        }
        if (c.controller)
            machine.addManagementController();
        if (c.tables)
            fullTables(machine);
        onSimulatedServer(machine,
                          [&c](Sim::Machine& machine)
                          {
                              EXPECT_EQ(c.answer, runPage("hardware.nsp", "command=query"));
                              const std::vector<Sim::IpmiRequest> sent =
                                  c.controller ? machine.managementController()->requests()
                                               : std::vector<Sim::IpmiRequest>();
                              EXPECT_EQ(c.probes,
                                        std::count_if(sent.begin(), sent.end(),
                                                      [](const Sim::IpmiRequest& r)
                                                      { return r.netfn == 6 && r.cmd == 1; }));
                              EXPECT_EQ(c.tables ? "" : "{\"ErrorCode\":1}",
                                        runPage("hardware.nsp", "Command=Inventory"));
                          });
    }

    // Missing records answer "".
    Sim::Machine sparse;
    sparse.installSmbios(Sim::SmbiosBuilder().bios("Velmar", "P70", "01/02/2012").systemId("725"));
    onSimulatedServer(
        sparse,
        [](Sim::Machine&)
        {
            EXPECT_EQ("{\"ErrorCode\":0,\"EVSupport\":\"No\",\"WD100Support\":\"No\","
                      "\"ROMName\":\"P70\",\"ROMDate\":\"01/02/2012\",\"RedundantROMDate\":\"\","
                      "\"ProductName\":\"\",\"ServerID\":\"\",\"SystemID\":\"725\","
                      "\"SerialNumber\":\"\",\"AssetTag\":\"\",\"TotalRAM\":\"0\"}",
                      runPage("hardware.nsp", "Command=Query"));
        });
}
