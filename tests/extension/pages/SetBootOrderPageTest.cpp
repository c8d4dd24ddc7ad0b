#include "CorvaneRom.h"
#include "tests/support/PageRun.h"
#include "tests/support/SimulatedServer.h"

#include <optional>
#include <string>
#include <vector>

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

// A request, its answer, and what the ROM variable "RXHIPL" holds after it
// (nothing: the variable is absent).
struct Step
{
    std::string query;
    std::string answer;
    std::optional<Bytes> order;
};
} // namespace

// The ROM's order is written as indexes into its IPL table: hd at 0, usb at
// 1, cdrom at 2, network boot at 3 (type 128) and 4 (type 6).
TEST(SetBootOrderPage, ROMOrderIsWrittenAsTableIndexes)
{
    Sim::Machine machine;
    addCorvaneRom(machine);
    machine.installIplTable({{2, {0, 31, 2}, "SATA disk"},
                             {5, {0, 29, 0}, "USB key"},
                             {3, {0, 31, 1}, "DVD drive"},
                             {128, {2, 0, 0}, "NIC 1"},
                             {6, {2, 0, 1}, "NIC 2"}});
    const Step steps[] = {
        {"Command=Query", kDevices + "]}", std::nullopt}, // not readable yet: no names
        {"Command=Perform&Order=cdrom&Order=hd", current("\"cdrom\",\"hd\""), Bytes{2, 0}},
        {"Command=Query", kDevices + "\"cdrom\",\"hd\"]}", Bytes{2, 0}},
        {"command=perform&Order=PXE", current("\"pxe\",\"pxe\""), Bytes{3, 4}},
        {"Command=Perform&Order=usb&Order=usb", current("\"usb\",\"usb\""), Bytes{1, 1}},
        {"Command=Perform&Order=Default", current(""), Bytes{}},
        {"Command=Perform&Order=hd", current("\"hd\""), Bytes{0}},
        {"Command=Perform&Order=hd&Order=default", current(""), Bytes{}},
        {"Command=Perform&Order=hd", current("\"hd\""), Bytes{0}},
        {"Command=Perform", current(""), Bytes{}},
        {"Command=Perform&Order=pcmcia", current(""), Bytes{}}, // known, but not in the table
        {"Command=Perform&Order=hd", current("\"hd\""), Bytes{0}},
        {"Command=Perform&Order=hd&Order=zip", kRefused, Bytes{0}},
        {"Command=Perform&Order=", kRefused, Bytes{0}},
        {"Command=Sort", "", Bytes{0}},
    };
    onSimulatedServer(
        machine,
        [&steps](Sim::Machine& machine)
        {
            for (const Step& step : steps)
            {
                EXPECT_EQ(step.answer, runPage("setbootorder.nsp", step.query)) << step.query;
                EXPECT_EQ(step.order, machine.environment().value("RXHIPL")) << step.query;
            }
            // Twenty indexes asked for: the first sixteen are written.
            std::string query = "Command=Perform";
            for (int i = 0; i < 10; ++i)
                query += "&Order=pxe";
            EXPECT_EQ(0u, runPage("setbootorder.nsp", query).find("{\"ErrorCode\":0,"));
            Bytes sixteen;
            for (int i = 0; i < 8; ++i)
                sixteen.insert(sixteen.end(), {3, 4});
            EXPECT_EQ(sixteen, machine.environment().value("RXHIPL"));
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
    Sim::Machine machine;
    machine.addManagementController();
    const struct
    {
        const char* order;
        const char* answer;
        std::uint8_t selector;
    } steps[] = {{"cdrom&Order=hd", "\"cdrom\"", 0x14},
                 {"usb", "\"hd\"", 0x08},
                 {"PXE", "\"pxe\"", 0x04},
                 {"fset", "\"fset\"", 0x18},
                 {"default", "\"default\"", 0x00}};
    onSimulatedServer(
        machine,
        [&steps](Sim::Machine& machine)
        {
            EXPECT_EQ(kDevices + "\"default\"]}", runPage("setbootorder.nsp", "Command=Query"));
            const std::vector<Sim::IpmiRequest>& requests =
                machine.managementController()->requests();
            for (auto const& step : steps)
            {
                const std::size_t before = requests.size();
                EXPECT_EQ(current(step.answer),
                          runPage("setbootorder.nsp",
                                  std::string("Command=Perform&Order=") + step.order));
                ASSERT_EQ(before + 2, requests.size()) << step.order;
                EXPECT_EQ(0x08, requests[before].cmd);
                EXPECT_EQ((Bytes{0x05, 0xC0, step.selector, 0x00, 0x00, 0x00}),
                          requests[before].data);
                EXPECT_EQ(0x09, requests[before + 1].cmd);
                EXPECT_EQ((Bytes{0x05, 0x00, 0x00}), requests[before + 1].data);
            }
            const std::size_t sent = requests.size();
            EXPECT_EQ(kRefused, runPage("setbootorder.nsp", "Command=Perform&Order=pcmcia"));
            EXPECT_EQ(kRefused, runPage("setbootorder.nsp", "Command=Perform"));
            EXPECT_EQ(sent, requests.size()) << "nothing sent";
        });

    // Variables but no IPL table, and no management controller.
    Sim::Machine neither;
    addCorvaneRom(neither);
    onSimulatedServer(
        neither,
        [](Sim::Machine&)
        {
            EXPECT_EQ("{\"ErrorCode\":1}", runPage("setbootorder.nsp", "Command=Query"));
            EXPECT_EQ("{\"ErrorCode\":1}", runPage("setbootorder.nsp", "Command=Perform&Order=hd"));
        });
}
