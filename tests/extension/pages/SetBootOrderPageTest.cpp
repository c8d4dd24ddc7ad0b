#include "PageRun.h"

#include "CorvaneRom.h"
#include "tests/support/SimulatedServer.h"

#include <string>
#include <vector>

namespace
{
const char kDevices[] =
    "{\"ErrorCode\":0,\"Order\":[{\"Name\":\"Default\",\"Value\":\"Default\"},{\"Name\":\"A:\","
    "\"Value\":\"floppy\"},{\"Name\":\"C:\",\"Value\":\"hd\"},{\"Name\":\"CD\",\"Value\":"
    "\"cdrom\"},{\"Name\":\"USB\",\"Value\":\"usb\"},{\"Name\":\"PXE\",\"Value\":\"pxe\"}],"
    "\"CurrentOrder\":[";

std::string bootOrder(const std::string& query)
{
    return runPage("setbootorder.nsp", query);
}

std::string current(const std::string& items)
{
    return "{\"ErrorCode\":0,\"CurrentOrder\":[" + items + "]}";
}

std::vector<std::uint8_t> order(Sim::Machine& machine)
{
    return machine.environment().value("RXHIPL").value_or(std::vector<std::uint8_t>{0xEE});
}

// A ROM with environment variables and an IPL table: hd at 0, cdrom at 2,
// network boot at 3 (type 128) and 4 (type 6).
void romServer(Sim::Machine& machine)
{
    addCorvaneRom(machine);
    machine.installIplTable({{2, {0, 31, 2}, "SATA disk"},
                             {5, {0, 29, 0}, "USB key"},
                             {3, {0, 31, 1}, "DVD drive"},
                             {128, {2, 0, 0}, "NIC 1"},
                             {6, {2, 0, 1}, "NIC 2"}});
}
} // namespace

TEST(SetBootOrderPage, ROMOrderIsWrittenAsTableIndexes)
{
    Sim::Machine machine;
    romServer(machine);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(current("\"cdrom\",\"hd\""),
                      bootOrder("Command=Perform&Order=cdrom&Order=hd"));
            EXPECT_EQ((std::vector<std::uint8_t>{0x02, 0x00}), order(machine));
            EXPECT_EQ(std::string(kDevices) + "\"cdrom\",\"hd\"]}", bootOrder("Command=Query"));

            // Both kinds of network boot, in table order.
            EXPECT_EQ(current("\"pxe\",\"pxe\""), bootOrder("command=perform&Order=PXE"));
            EXPECT_EQ((std::vector<std::uint8_t>{0x03, 0x04}), order(machine));

            // A name given twice adds its entries twice.
            EXPECT_EQ(current("\"usb\",\"usb\""), bootOrder("Command=Perform&Order=usb&Order=usb"));
            EXPECT_EQ((std::vector<std::uint8_t>{0x01, 0x01}), order(machine));
        });
}

TEST(SetBootOrderPage, ROMDefaultOrderAndNamesWithoutEntries)
{
    Sim::Machine machine;
    romServer(machine);
    onSimulatedServer(machine,
                      [](Sim::Machine& machine)
                      {
                          // The order cannot be read yet: Query answers no names.
                          EXPECT_EQ(std::string(kDevices) + "]}", bootOrder("Command=Query"));

                          bootOrder("Command=Perform&Order=hd");
                          EXPECT_EQ(current(""), bootOrder("Command=Perform&Order=Default"));
                          EXPECT_TRUE(order(machine).empty());
                          bootOrder("Command=Perform&Order=hd");
                          EXPECT_EQ(current(""),
                                    bootOrder("Command=Perform&Order=hd&Order=default"));
                          EXPECT_TRUE(order(machine).empty());
                          bootOrder("Command=Perform&Order=hd");
                          EXPECT_EQ(current(""), bootOrder("Command=Perform"));
                          EXPECT_TRUE(order(machine).empty());

                          // Known, but the table lists no such device.
                          EXPECT_EQ(current(""), bootOrder("Command=Perform&Order=pcmcia"));
                          EXPECT_TRUE(order(machine).empty());
                      });
}

TEST(SetBootOrderPage, ROMRefusesUnknownNamesAndKeepsSixteenIndexes)
{
    Sim::Machine machine;
    romServer(machine);
    machine.environment().set("RXHIPL", {0x02, 0xFF, 0x07, 0x00});
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            // Unused bytes are skipped; an index beyond the table has no name.
            EXPECT_EQ(std::string(kDevices) + "\"cdrom\",\"\",\"hd\"]}",
                      bootOrder("Command=Query"));

            EXPECT_EQ("{\"ErrorCode\":2,\"CurrentOrder\":[]}",
                      bootOrder("Command=Perform&Order=hd&Order=zip"));
            EXPECT_EQ("{\"ErrorCode\":2,\"CurrentOrder\":[]}", bootOrder("Command=Perform&Order="));
            EXPECT_EQ((std::vector<std::uint8_t>{0x02, 0xFF, 0x07, 0x00}), order(machine));

            // 20 indexes asked for: the first 16 are written.
            std::string query = "Command=Perform";
            for (int i = 0; i < 10; ++i)
                query += "&Order=pxe";
            EXPECT_EQ(0u, bootOrder(query).find("{\"ErrorCode\":0,"));
            EXPECT_EQ(16u, order(machine).size());
            EXPECT_EQ(0x03, order(machine)[14]);
            EXPECT_EQ(0x04, order(machine)[15]);

            EXPECT_EQ("", bootOrder("Command=Sort"));
        });
}

TEST(SetBootOrderPage, IPMIOrderIsOnePersistentBootDevice)
{
    Sim::Machine machine;
    machine.addManagementController();
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(std::string(kDevices) + "\"default\"]}", bootOrder("Command=Query"));

            Sim::ManagementController& controller = *machine.managementController();
            std::size_t before = controller.requests().size();
            EXPECT_EQ(current("\"cdrom\""), bootOrder("Command=Perform&Order=cdrom&Order=hd"));
            ASSERT_EQ(before + 2, controller.requests().size());
            Sim::IpmiRequest const& set = controller.requests()[before];
            EXPECT_EQ(0x00, set.netfn);
            EXPECT_EQ(0x08, set.cmd);
            EXPECT_EQ((std::vector<std::uint8_t>{0x05, 0xC0, 0x14, 0x00, 0x00, 0x00}), set.data);
            Sim::IpmiRequest const& get = controller.requests()[before + 1];
            EXPECT_EQ(0x00, get.netfn);
            EXPECT_EQ(0x09, get.cmd);
            EXPECT_EQ((std::vector<std::uint8_t>{0x05, 0x00, 0x00}), get.data);

            // "usb" sets the hard-disk selector and reads back as "hd".
            EXPECT_EQ(current("\"hd\""), bootOrder("Command=Perform&Order=usb"));
            EXPECT_EQ((std::vector<std::uint8_t>{0x05, 0xC0, 0x08, 0x00, 0x00, 0x00}),
                      controller.requests()[before + 2].data);
            EXPECT_EQ(current("\"pxe\""), bootOrder("Command=Perform&Order=PXE"));
            EXPECT_EQ(current("\"fset\""), bootOrder("Command=Perform&Order=fset"));
            EXPECT_EQ(current("\"default\""), bootOrder("Command=Perform&Order=default"));

            std::size_t sent = controller.requests().size();
            EXPECT_EQ("{\"ErrorCode\":2,\"CurrentOrder\":[]}",
                      bootOrder("Command=Perform&Order=pcmcia"));
            EXPECT_EQ("{\"ErrorCode\":2,\"CurrentOrder\":[]}", bootOrder("Command=Perform"));
            EXPECT_EQ(sent, controller.requests().size()) << "nothing sent";
        });
}

TEST(SetBootOrderPage, UnsupportedWithoutROMOrderOrController)
{
    // Variables but no IPL table, and no management controller.
    Sim::Machine machine;
    addCorvaneRom(machine);
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          EXPECT_EQ("{\"ErrorCode\":1}", bootOrder("Command=Query"));
                          EXPECT_EQ("{\"ErrorCode\":1}", bootOrder("Command=Perform&Order=hd"));
                      });
}
