#include "CorvaneServer.h"
#include "tests/support/IpmiLog.h"
#include "tests/support/PageRun.h"
#include "tests/support/SimulatedServer.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>
#include <vector>

using testing::StartsWith;
using TestSupport::runPage;

namespace
{
typedef std::vector<std::uint8_t> Bytes;

const std::string kDevices =
    "{\"ErrorCode\":0,\"Order\":[{\"Name\":\"Default\",\"Value\":\"Default\"},{\"Name\":\"A:\","
    "\"Value\":\"floppy\"},{\"Name\":\"C:\",\"Value\":\"hd\"},{\"Name\":\"CD\",\"Value\":"
    "\"cdrom\"},{\"Name\":\"USB\",\"Value\":\"usb\"},{\"Name\":\"PXE\",\"Value\":\"pxe\"}],"
    "\"CurrentOrder\":[";
const std::string kRefused = "{\"ErrorCode\":2,\"CurrentOrder\":[]}";

std::string current(const std::string& items)
{
    return "{\"ErrorCode\":0,\"CurrentOrder\":[" + items + "]}";
}
} // namespace

// The ROM's order is written to "RXHIPL" as indexes into its IPL table: hd
// at 0, usb at 1, cdrom at 2, network boot at 3 (type 128) and 4 (type 6).
TEST(SetBootOrderPage, ROMOrderIsWrittenAsTableIndexes)
{
    Sim::Machine machine;
    addCorvaneRom(machine);
    machine.installIplTable({{2, {0, 31, 2}, "SATA disk"},
                             {5, {0, 29, 0}, "USB key"},
                             {3, {0, 31, 1}, "DVD drive"},
                             {128, {2, 0, 0}, "NIC 1"},
                             {6, {2, 0, 1}, "NIC 2"}});
    std::string twentyPxe = "Perform";
    for (int i = 0; i < 10; ++i)
        twentyPxe += "&Order=pxe";
    const struct
    {
        std::string command;
        testing::Matcher<std::string> answer;
        std::optional<Bytes> order; // none: the variable is absent
    } steps[] = {
        {"Query", kDevices + "]}", std::nullopt}, // not readable yet: no names
        {"Perform&Order=cdrom&Order=hd", current("\"cdrom\",\"hd\""), Bytes{2, 0}},
        {"Query", kDevices + "\"cdrom\",\"hd\"]}", Bytes{2, 0}},
        {"perform&Order=PXE", current("\"pxe\",\"pxe\""), Bytes{3, 4}},
        {"Perform&Order=usb&Order=usb", current("\"usb\",\"usb\""), Bytes{1, 1}},
        {"Perform&Order=Default", current(""), Bytes{}},
        {"Perform&Order=hd", current("\"hd\""), Bytes{0}},
        {"Perform&Order=hd&Order=default", current(""), Bytes{}},
        {"Perform&Order=hd", current("\"hd\""), Bytes{0}},
        {"Perform", current(""), Bytes{}},
        {"Perform&Order=pcmcia", current(""), Bytes{}}, // known, but not in the table
        {"Perform&Order=hd", current("\"hd\""), Bytes{0}},
        {"Perform&Order=hd&Order=zip", kRefused, Bytes{0}},
        {"Perform&Order=", kRefused, Bytes{0}},
        {"Sort", "", Bytes{0}},
        // Twenty indexes asked for: the first sixteen are written.
        {twentyPxe, StartsWith("{\"ErrorCode\":0,"),
         Bytes{3, 4, 3, 4, 3, 4, 3, 4, 3, 4, 3, 4, 3, 4, 3, 4}},
    };
    onSimulatedServer(
        machine,
        [&steps](Sim::Machine& machine)
        {
            for (auto const& step : steps)
            {
                EXPECT_THAT(runPage("setbootorder.nsp", "Command=" + step.command), step.answer)
                    << step.command;
                EXPECT_EQ(step.order, machine.environment().value("RXHIPL")) << step.command;
            }
            // Unused bytes are skipped; an index beyond the table has no name.
            machine.environment().set("RXHIPL", {0x02, 0xFF, 0x07, 0x00});
            EXPECT_EQ(kDevices + "\"cdrom\",\"\",\"hd\"]}",
                      runPage("setbootorder.nsp", "Command=Query"));
        });
}

// Through the management controller the order is one persistent boot
// device: Set System Boot Options (boot flags), then read back.
TEST(SetBootOrderPage, IPMIOrderIsOnePersistentBootDevice)
{
    const struct
    {
        const char* command;
        std::string answer;
        const char* sent;
    } steps[] = {
        {"Query", kDevices + "\"default\"]}", "0601: 0009:050000"},
        {"Perform&Order=cdrom&Order=hd", current("\"cdrom\""), "0008:05C01400*3 0009:050000"},
        {"Perform&Order=usb", current("\"hd\""), "0008:05C00800*3 0009:050000"},
        {"Perform&Order=PXE", current("\"pxe\""), "0008:05C00400*3 0009:050000"},
        {"Perform&Order=fset", current("\"fset\""), "0008:05C01800*3 0009:050000"},
        {"Perform&Order=default", current("\"default\""), "0008:05C000*4 0009:050000"},
        {"Perform&Order=pcmcia", kRefused, ""},
        {"Perform", kRefused, ""},
    };
    Sim::Machine machine;
    machine.addManagementController();
    onSimulatedServer(
        machine,
        [&steps](Sim::Machine& machine)
        {
            for (auto const& step : steps)
            {
                const std::size_t from = machine.managementController()->requests().size();
                EXPECT_EQ(step.answer,
                          runPage("setbootorder.nsp", std::string("Command=") + step.command));
                EXPECT_EQ(step.sent, ipmiLog(machine, from)) << step.command;
            }
        });

    // Variables but no IPL table, and no management controller.
    Sim::Machine neither;
    addCorvaneRom(neither);
    onSimulatedServer(neither,
                      [](Sim::Machine&)
                      {
                          for (const char* query : {"Command=Query", "Command=Perform&Order=hd"})
                              EXPECT_EQ("{\"ErrorCode\":1}", runPage("setbootorder.nsp", query));
                      });
}
