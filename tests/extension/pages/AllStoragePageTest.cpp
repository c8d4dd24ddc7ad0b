#include "../TestSupport.h"

#include "sim/RomServices.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

using TestSupport::readFile;
using TestSupport::runPage;

namespace
{
// The names database's rules are checked in the collection's tests.
const char kNames[] =
    "<AllBoards><PCI>"
    "<dev id=\"103C323A0E113245\"><name>Stratum Array R4e</name></dev>"
    "<dev id=\"80863A200E11330D\"><name></name></dev>"
    "<dev id=\"1000003000000000\"><name>Sample Ultra320 SCSI Controller</name></dev>"
    "</PCI></AllBoards>";

// The document that allstorage.nsp writes with kNames.
std::string inventory()
{
    ScratchFolder dir;
    TestSupport::writeFile(dir.path("allboards.xml"), kNames);
    EXPECT_EQ("{\"ErrorCode\":0}",
              runPage("allstorage.nsp", "Command=Create&AllBoardsXML=" + dir.path("allboards.xml") +
                                            "&AllStorageXML=" + dir.path("allstorage.xml")));
    return readFile(dir.path("allstorage.xml"));
}

// "bus:device.function" of every controller, in document order.
std::vector<std::string> controllerOrder(const std::string& document)
{
    static const std::regex device("<PCIDevice [^>]*Bus=\"(..)\"[^>]*Device=\"(..)\"[^>]*"
                                   "Function=\"(..)\"[^>]*Index=\"([0-9]+)\"");
    std::vector<std::string> order;
    for (std::sregex_iterator it(document.begin(), document.end(), device), end; it != end; ++it)
        order.push_back((*it)[1].str() + ":" + (*it)[2].str() + "." + (*it)[3].str());
    return order;
}

// A Corvane ROM whose boot-controller list "RXHORD" holds `records` in
// order: {bus, device << 3 | function, subsystem}, each stored as the
// subsystem byte-reversed, a filler, the bus and the device/function byte.
void addBootControllerList(Sim::Machine& machine,
                           std::initializer_list<std::array<std::uint32_t, 3>> records)
{
    Sim::RomServices::addStandardRom(machine);
    std::vector<std::uint8_t> value;
    for (auto const& r : records)
        for (std::uint32_t byte :
             {r[2] >> 24, r[2] >> 16, r[2] >> 8, r[2], 0xEEu, r[0], r[1], 0xEEu})
            value.push_back(static_cast<std::uint8_t>(byte));
    machine.environment().set("RXHORD", value);
}

// Storage controllers among other functions, disks in both sysfs layouts, and
// a routing table with only the Fibre Channel adapter (slot 2); no ROM.
void addStorage(Sim::Machine& machine)
{
    machine.provideVlmpci();
    machine.addRoutingLine({{4, 0, 0}, 2});
    machine.addFunction({0, 0, 0}, 0x1000, 0x0030, 0x01, 0x00);    // SCSI, subsystem 0
    machine.addFunction({0, 0x1D, 0}, 0x8086, 0x3A34, 0x0C, 0x03); // USB
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x3A20, 0x01, 0x01).subsystem(0x0E11, 0x330D);
    machine.addFunction({0, 0x1F, 3}, 0x8086, 0x3A30, 0x0C, 0x05); // SMBus
    machine.addFunction({0, 0x1F, 6}, 0x8086, 0x3A36, 0x01, 0x80); // other mass storage
    machine.addFunction({2, 0, 0}, 0x14E4, 0x1639, 0x02, 0x00);    // network
    machine.addFunction({3, 0, 0}, 0x103C, 0x323A, 0x01, 0x04).subsystem(0x0E11, 0x3245);
    machine.addFunction({4, 0, 0}, 0x1077, 0x2532, 0x0C, 0x04).subsystem(0x0E11, 0x3262);
    machine.addDisk({{3, 0, 0}, "strata!c0d0", 73407865856, true});
    machine.addDisk({{3, 0, 0}, "strata!c0d1", 0});
    machine.addDisk({{3, 0, 0}, "strata!c0d3", 300000000000});
    machine.addDisk({{3, 0, 0}, "strata!c0d2", 146778685440});
    machine.addDisk({{4, 0, 0}, "sdb", 1000204886016, false, true});
    machine.addDisk({{4, 0, 0}, "sda", 500107862016, false, true});
    machine.addDisk({{0, 0x1F, 2}, "sr0", 0, true});
}
} // namespace

TEST(AllStoragePage, DocumentOfControllersNamesAndDisks)
{
    Sim::Machine machine;
    addStorage(machine);
    auto check = [](Sim::Machine&)
    {
        // Without environment variables the boot-controller records stay
        // zeroed: only the controller at 00:00.0 with subsystem 0 is ranked
        // (0); the embedded IDE controller takes rank 1; the unranked ones
        // follow in the order the sort leaves equal ranks (exchanged).
        EXPECT_EQ(
            "<AllStorage PCIDeviceCount=\"4\">"
            "<PCIDevice BlockDeviceCount=\"0\" BootOrder=\"0\" Bus=\"00\" ClassCode=\"01\" "
            "Device=\"00\" DeviceID=\"0030\" Function=\"00\" Index=\"0\" Name=\"Sample Ultra320 "
            "SCSI Controller\" "
            "Slot=\"0\" SubClassCode=\"00\" SubsystemID=\"00000000\" VendorID=\"1000\"/>"
            "<PCIDevice BlockDeviceCount=\"0\" BootOrder=\"1\" Bus=\"00\" ClassCode=\"01\" "
            "Device=\"1F\" DeviceID=\"3A20\" Function=\"02\" Index=\"1\" Name=\"\" Slot=\"0\" "
            "SubClassCode=\"01\" SubsystemID=\"0E11330D\" VendorID=\"8086\"/>"
            "<PCIDevice BlockDeviceCount=\"2\" BootOrder=\"2\" Bus=\"04\" ClassCode=\"0C\" "
            "Device=\"00\" DeviceID=\"2532\" Function=\"00\" Index=\"2\" "
            "Name=\"Integrated PCI IDE Controller\" Slot=\"2\" SubClassCode=\"04\" "
            "SubsystemID=\"0E113262\" VendorID=\"1077\">"
            "<BlockDevice DeviceNode=\"/dev/sda\" DriveNumber=\"1\" Index=\"0\" Removable=\"0\" "
            "Size=\"500107862016\"/>"
            "<BlockDevice DeviceNode=\"/dev/sdb\" DriveNumber=\"2\" Index=\"1\" Removable=\"0\" "
            "Size=\"1000204886016\"/></PCIDevice>"
            "<PCIDevice BlockDeviceCount=\"2\" BootOrder=\"3\" Bus=\"03\" ClassCode=\"01\" "
            "Device=\"00\" DeviceID=\"323A\" Function=\"00\" Index=\"3\" "
            "Name=\"Stratum Array R4e\" Slot=\"0\" SubClassCode=\"04\" SubsystemID=\"0E113245\" "
            "VendorID=\"103C\">"
            "<BlockDevice DeviceNode=\"/dev/strata/c0d2\" DriveNumber=\"1\" Index=\"0\" "
            "Removable=\"0\" Size=\"146778685440\"/>"
            "<BlockDevice DeviceNode=\"/dev/strata/c0d3\" DriveNumber=\"2\" Index=\"1\" "
            "Removable=\"0\" Size=\"300000000000\"/></PCIDevice>"
            "</AllStorage>",
            inventory());

        ScratchFolder dir;
        const std::string target = dir.path("allstorage.xml");
        EXPECT_EQ("{\"ErrorCode\":1}", runPage("allstorage.nsp", "AllStorageXML=" + target));
        EXPECT_EQ("{\"ErrorCode\":1}",
                  runPage("allstorage.nsp", "Command=Query&AllStorageXML=" + target));
        EXPECT_FALSE(std::filesystem::exists(target));
        // Without a names database every controller is unnamed; a file that
        // cannot be written is not reported.
        EXPECT_EQ("{\"ErrorCode\":0}",
                  runPage("allstorage.nsp", "command=CREATE&AllStorageXML=" + target));
        const std::string unnamed = readFile(target);
        EXPECT_EQ(0u, unnamed.find("<AllStorage PCIDeviceCount=\"4\">"));
        EXPECT_EQ(std::string::npos, unnamed.find("Stratum"));
        EXPECT_EQ("{\"ErrorCode\":0}",
                  runPage("allstorage.nsp", "Command=Create&AllStorageXML=" + dir.path()));
    };
    onSimulatedServer(machine, check);
}

// An IDE controller of servers 725 and 747 is looked up one function lower:
// at 00:00.1 it meets the zeroed records (no environment variables), which
// name 00:00.0 with subsystem 0; at 00:1F.2 it meets the firmware's list.
// Without a routing table no IDE controller counts as embedded.
TEST(AllStoragePage, IDEControllersOfServers725And747AreLookedUpOneFunctionLower)
{
    const struct
    {
        const char* server;
        bool listed;
        std::vector<std::string> order;
    } cases[] = {
        {"ZR0A0725", false, {"00:00.01", "00:1F.05", "00:1F.02"}},
        {"ZR0B0747", false, {"00:00.01", "00:1F.05", "00:1F.02"}},
        {"ZR0A0726", false, {"00:1F.05", "00:1F.02", "00:00.01"}},
        {"725", false, {"00:1F.05", "00:1F.02", "00:00.01"}},
        {"ZR0B0747", true, {"00:1F.02", "00:1F.05"}},
        {"ZR0A0726", true, {"00:1F.05", "00:1F.02"}},
    };
    for (auto const& c : cases)
    {
        Sim::Machine machine;
        machine.installSmbios(Sim::SmbiosBuilder().systemId(c.server));
        if (c.listed)
            addBootControllerList(machine,
                                  {{0, 0x1F << 3 | 1, 0x0E11330D}, {0, 0x1F << 3 | 5, 0x0E11330D}});
        else
            machine.addFunction({0, 0, 1}, 0x8086, 0x7111, 0x01, 0x01);
        machine.addFunction({0, 0x1F, 2}, 0x8086, 0x3A20, 0x01, c.listed ? 0x01 : 0x06)
            .subsystem(0x0E11, 0x330D);
        machine.addFunction({0, 0x1F, 5}, 0x8086, 0x3A26, 0x01, 0x06).subsystem(0x0E11, 0x330D);
        onSimulatedServer(machine, [&c](Sim::Machine&)
                          { EXPECT_EQ(c.order, controllerOrder(inventory())) << c.server; });
    }
}

TEST(AllStoragePage, ControllersRankedByTheFirmwaresBootControllerList)
{
    Sim::Machine machine;
    machine.installSmbios(Sim::SmbiosBuilder().systemId("ZR0A0725"));
    // The IDE controller (slot 0, unlike the routed adapter) is the embedded one.
    machine.addRoutingLine({{4, 0, 0}, 2});
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x3A20, 0x01, 0x01).subsystem(0x0E11, 0x330D);
    machine.addFunction({3, 0, 0}, 0x103C, 0x323A, 0x01, 0x04).subsystem(0x0E11, 0x3245);
    machine.addFunction({4, 0, 0}, 0x1077, 0x2532, 0x0C, 0x04).subsystem(0x0E11, 0x3262);
    machine.addFunction({5, 0, 0}, 0x1000, 0x0072, 0x01, 0x07).subsystem(0x1028, 0x1F1C);
    machine.addFunction({6, 0, 0}, 0x8086, 0x2922, 0x01, 0x06);
    addBootControllerList(machine, {
                                       {4, 0 << 3 | 0, 0x0E113262},
                                       {3, 0 << 3 | 0, 0x0E113245},
                                       {5, 0 << 3 | 0, 0x1028FFFF},    // another subsystem
                                       {5, 0 << 3 | 1, 0x10281F1C},    // another function
                                       {0, 0x1F << 3 | 2, 0x0E11330D}, // never looked up
                                       {5, 0 << 3 | 0, 0x10281F1C},
                                   });
    // Ranks 1 (embedded IDE), 1, 0, 5 and unranked, in enumeration order;
    // the sort exchanges the two of rank 1 on its way.
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          EXPECT_EQ((std::vector<std::string>{"04:00.00", "03:00.00", "00:1F.02",
                                                              "05:00.00", "06:00.00"}),
                                    controllerOrder(inventory()));
                      });
}
