#include "CorvaneServer.h"
#include "tests/support/IpmiLog.h"
#include "tests/support/PageRun.h"

#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <string>

using TestSupport::runPage;

namespace
{
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
// without the ROM's environment variables; missing records answer "".
TEST(HardwarePage, SummaryFromTheTablesAndWhichInterfacesTheServerOffers)
{
    const std::string sparse =
        "{\"ErrorCode\":0,\"EVSupport\":\"No\",\"WD100Support\":\"No\",\"ROMName\":\"P70\","
        "\"ROMDate\":\"01/02/2012\",\"RedundantROMDate\":\"\",\"ProductName\":\"\",\"ServerID\":"
        "\"\",\"SystemID\":\"725\",\"SerialNumber\":\"\",\"AssetTag\":\"\",\"TotalRAM\":\"0\"}";
    const struct
    {
        bool rom, controller;
        int tables; // none, full, sparse
        std::string answer;
        const char* probes;
    } cases[] = {
        {true, true, 1, summary("Yes", "No"), ""},
        {false, true, 1, summary("No", "Yes"), "0601:"},
        {false, false, 1, summary("No", "No"), ""},
        {true, true, 0, "{\"ErrorCode\":1}", ""},
        {false, false, 2, sparse, ""},
    };
    for (auto const& c : cases)
    {
        Sim::Machine machine;
        if (c.rom)
            addCorvaneRom(machine);
        if (c.controller)
            machine.addManagementController();
        if (c.tables == 1)
            machine.installSmbios(corvaneTables());
        else if (c.tables == 2)
            machine.installSmbios(
                Sim::SmbiosBuilder().bios("Velmar", "P70", "01/02/2012").systemId("725"));
        onSimulatedServer(machine,
                          [&c](Sim::Machine& machine)
                          {
                              EXPECT_EQ(c.answer, runPage("hardware.nsp", "command=query"));
                              EXPECT_EQ(c.probes,
                                        c.controller ? ipmiLog(machine, 0, "0601") : std::string());
                              EXPECT_EQ(c.tables ? "" : "{\"ErrorCode\":1}",
                                        runPage("hardware.nsp", "Command=Inventory"));
                          });
    }
}
