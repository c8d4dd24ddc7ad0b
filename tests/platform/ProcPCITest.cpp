#include "platform/ProcPCI.h"
#include "platform/Hardware.h"

#include "tests/support/SimulatedServer.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <vector>

namespace fs = std::filesystem;

namespace
{
fs::path rooted(char const* fixedPath)
{
    return fs::path(Common::Platform::hardware().path(fixedPath).c_str());
}

std::vector<int> walkAll()
{
    std::vector<int> found;
    _PCI_ITER iter;
    for (int value = first_pci_device(&iter); value >= 0; value = next_pci_device(&iter))
        found.push_back(value);
    return found;
}

// Bus directories under "/proc/bus/pci" in the order the directory lists them.
std::vector<int> busesInDirectoryOrder()
{
    std::vector<int> buses;
    for (auto const& entry : fs::directory_iterator(rooted("/proc/bus/pci")))
        if (entry.is_directory())
            buses.push_back(std::stoi(entry.path().filename().string(), nullptr, 16));
    return buses;
}

int busDevfn(int bus, int device, int function)
{
    return bus << 8 | device << 3 | function;
}
} // namespace

TEST(ProcPCI, ConfigurationFilesAreReadAndWrittenExactly)
{
    Sim::Machine machine;
    machine.addFunction({0, 2, 0}, 0x8086, 0x2922, 0x01, 0x06).setDword(0x3C, 0x0000010B);
    machine.addFunction({1, 0, 1}, 0x1000, 0x0072, 0x01, 0x07).procFileSize(64);
    auto check = [](Sim::Machine& machine)
    {
        unsigned int dword = 0;
        EXPECT_EQ(0, pci_read_config_dword(0, 2, 0, 0, &dword));
        EXPECT_EQ(0x29228086u, dword);

        unsigned char header[64];
        EXPECT_EQ(0, pci_read_config_header(0, 2, 0, header));
        auto const& config = machine.bridge().find({0, 2, 0})->config();
        EXPECT_TRUE(std::equal(header, header + 64, config.begin()));

        unsigned short word = 0;
        EXPECT_EQ(0, pci_read_config_word(1, 0, 1, 0x3E, &word)) << "last word of a 64-byte file";
        EXPECT_EQ(-1, pci_read_config_word(1, 0, 1, 0x40, &word)) << "past the file's end";
        EXPECT_EQ(0xFFFF, word);
        dword = 0;
        EXPECT_EQ(-1, pci_read_config_dword(1, 0, 1, 0x3E, &dword)) << "runs past the end";
        EXPECT_EQ(0xFFFF0000u, dword) << "the bytes that exist are read, the rest stay 0xFF";

        unsigned char bytes[8] = {};
        EXPECT_EQ(-1, pci_read_config(0, 3, 0, 0, bytes, 8)) << "absent function";
        EXPECT_TRUE(std::all_of(bytes, bytes + 8, [](unsigned char b) { return b == 0xFF; }));
        EXPECT_EQ(-1, pci_read_config(0, 2, 0, -4, bytes, 4));

        EXPECT_EQ(0, pci_write_config_dword(0, 2, 0, 0x40, 0xA5A50F0Fu));
        EXPECT_EQ(0, pci_write_config_word(0, 2, 0, 0x44, 0x1234));
        EXPECT_EQ(0, pci_write_config_byte(0, 2, 0, 0x46, 0x56));
        unsigned char byte = 0;
        EXPECT_EQ(0, pci_read_config_dword(0, 2, 0, 0x40, &dword));
        EXPECT_EQ(0, pci_read_config_byte(0, 2, 0, 0x46, &byte));
        EXPECT_EQ(0xA5A50F0Fu, dword);
        EXPECT_EQ(0x56, byte);
        EXPECT_EQ(-1, pci_write_config_byte(4, 0, 0, 0x40, 0x56));

        int fd = pci_open(0, 2, 0, O_RDONLY);
        EXPECT_GE(fd, 0);
        EXPECT_EQ(0, pci_close(fd));
        EXPECT_LT(pci_open(7, 0, 0, O_RDONLY), 0);
    };
    onSimulatedServer(machine, check);
}

TEST(ProcPCI, ListingsTakeOnlyBusAndFunctionEntries)
{
    Sim::Machine machine;
    machine.addFunction({0, 0, 0}, 0x8086, 0x3406, 0x06, 0x00);
    machine.addFunction({2, 0, 0}, 0x14E4, 0x1639, 0x02, 0x00);
    machine.addFunction({2, 1, 5}, 0x14E4, 0x1639, 0x02, 0x00);
    machine.addFunction({0x80, 0x1F, 7}, 0x8086, 0x2C70, 0x06, 0x00);
    auto check = [](Sim::Machine&)
    {
        std::ofstream(rooted("/proc/bus/pci/zz"));
        std::ofstream(rooted("/proc/bus/pci/1"));
        std::ofstream(rooted("/proc/bus/pci/02/ab"));

        std::set<int> buses;
        DIR* dir = nullptr;
        for (int bus = first_bus(&dir); bus >= 0; bus = next_bus(&dir))
            buses.insert(bus);
        EXPECT_EQ((std::set<int>{0x00, 0x02, 0x80}), buses);
        EXPECT_EQ(nullptr, dir) << "closed at the end";
        EXPECT_EQ(-1, next_bus(&dir));

        std::set<int> devfns;
        for (int devfn = first_device(&dir, 2); devfn >= 0; devfn = next_device(&dir))
            devfns.insert(devfn);
        EXPECT_EQ((std::set<int>{0x00, 1 << 3 | 5}), devfns);
        EXPECT_EQ(nullptr, dir);
        EXPECT_EQ(0xFF, first_device(&dir, 0x80));
        EXPECT_EQ(-1, next_device(&dir));
        EXPECT_EQ(-1, first_device(&dir, 0x33)) << "no such bus";
        EXPECT_EQ(nullptr, dir);

        std::vector<int> all = walkAll();
        EXPECT_EQ((std::multiset<int>{busDevfn(0, 0, 0), busDevfn(2, 0, 0), busDevfn(2, 1, 5),
                                      busDevfn(0x80, 0x1F, 7)}),
                  std::multiset<int>(all.begin(), all.end()));
    };
    onSimulatedServer(machine, check);

    Sim::Machine noProc;
    noProc.faults().noProcBusPci = true;
    auto checkNoProc = [](Sim::Machine&)
    {
        DIR* dir = nullptr;
        EXPECT_EQ(-1, first_bus(&dir));
        EXPECT_TRUE(walkAll().empty());
    };
    onSimulatedServer(noProc, checkNoProc);
}

TEST(ProcPCI, WalkEndsAtTheFirstBusDirectoryWithoutDevices)
{
    Sim::Machine machine;
    machine.addFunction({0, 0, 0}, 0x8086, 0x3406, 0x06, 0x00);
    machine.addFunction({0, 1, 0}, 0x8086, 0x3408, 0x06, 0x04);
    machine.addEmptyBusDirectory(1);
    machine.addEmptyBusDirectory(5);
    machine.addEmptyBusDirectory(6);
    machine.addFunction({2, 0, 0}, 0x14E4, 0x1639, 0x02, 0x00);
    machine.addFunction({3, 4, 0}, 0x1000, 0x0072, 0x01, 0x07);
    machine.addFunction({4, 0, 0}, 0x1000, 0x0072, 0x01, 0x07);
    auto check = [](Sim::Machine& machine)
    {
        // Buses come in the order the directory lists them, which the file
        // system decides; the walk stops at the first empty one after the
        // first bus (or gives nothing when the first bus is empty).
        std::multiset<int> expected;
        for (int bus : busesInDirectoryOrder())
        {
            bool empty = true;
            for (auto const& located : machine.bridge().functions())
                if (located.first.bus == bus)
                {
                    empty = false;
                    expected.insert(busDevfn(bus, located.first.device, located.first.function));
                }
            if (empty)
                break;
        }
        std::vector<int> walked = walkAll();
        EXPECT_EQ(expected, std::multiset<int>(walked.begin(), walked.end()));
    };
    onSimulatedServer(machine, check);
}

TEST(ProcPCI, SpeedFromStatusAndPCIXCapability)
{
    const std::uint8_t kPCIX = 7;
    const std::uint8_t kPowerManagement = 1;
    Sim::Machine machine;
    machine.addFunction({0, 1, 0}, 0x8086, 1, 0x02, 0x00);
    machine.addFunction({0, 2, 0}, 0x8086, 2, 0x02, 0x00).setWord(0x06, 0x0020);
    machine.addFunction({0, 3, 0}, 0x8086, 3, 0x02, 0x00)
        .capability(kPowerManagement, {0x02, 0x00, 0, 0, 0, 0})
        .capability(kPCIX, {0, 0, 0, 0, 0x02, 0});
    machine.addFunction({0, 4, 0}, 0x8086, 4, 0x02, 0x00)
        .setWord(0x06, 0x0020)
        .capability(kPCIX, {0, 0, 0, 0, 0x01, 0});
    machine.addFunction({0, 5, 0}, 0x8086, 5, 0x02, 0x00)
        .capability(kPCIX, {0, 0, 0, 0, 0, 0})
        .procFileSize(0x44); // the PCI-X status lies past the file
    machine.addFunction({0, 6, 0}, 0x8086, 6, 0x02, 0x00)
        .setWord(0x06, 0x0020)
        .capability(kPowerManagement, {})
        .setByte(0x41, 0x40); // a capability list that points to itself
    auto check = [](Sim::Machine&)
    {
        EXPECT_EQ(33, pci_read_config_speed(0, 1, 0));
        EXPECT_EQ(66, pci_read_config_speed(0, 2, 0));
        EXPECT_EQ(133, pci_read_config_speed(0, 3, 0));
        EXPECT_EQ(66, pci_read_config_speed(0, 4, 0));
        EXPECT_EQ(133, pci_read_config_speed(0, 5, 0)) << "unreadable PCI-X status";
        EXPECT_EQ(66, pci_read_config_speed(0, 6, 0));
        EXPECT_EQ(0, pci_read_config_speed(0, 7, 0)) << "absent function";
        EXPECT_EQ(133, pcix_speed(0, 7, 0, 0x40));
    };
    onSimulatedServer(machine, check);
}

TEST(ProcPCI, PredecessorBridgesAndRoutingEntriesForDevicesBehindThem)
{
    Sim::Machine machine;
    machine.addFunction({0, 0, 0}, 0x8086, 0x3406, 0x06, 0x00);
    machine.addBridge({0, 0x1E, 0}, 2);
    machine.addFunction({2, 0, 0}, 0x14E4, 0x1639, 0x02, 0x00);
    machine.addFunction({2, 1, 0}, 0x14E4, 0x1639, 0x02, 0x00);
    machine.addBridge({2, 4, 0}, 5);
    machine.addFunction({5, 3, 0}, 0x1000, 0x0072, 0x01, 0x07);
    machine.addBridge({7, 0, 0}, 7); // its own secondary bus: a loop
    auto check = [](Sim::Machine&)
    {
        int table[256];
        EXPECT_EQ(7, compute_predecessor_bridge(table, 256));
        EXPECT_EQ(busDevfn(0, 0x1E, 0), table[2]);
        EXPECT_EQ(busDevfn(2, 4, 0), table[5]);
        EXPECT_EQ(busDevfn(7, 0, 0), table[7]);
        EXPECT_EQ(-1, table[0]);
        EXPECT_EQ(-1, table[3]);

        _PCIIRQROUTENTRY known[1] = {};
        known[0].bus = 0;
        known[0].devfn = 0x1E << 3;
        known[0].pin[0].link = 0x61;
        known[0].slot = 4;

        // Bus 2 takes the entry of its bridge; bus 5, whose bridge has none,
        // that of the bridge above.
        _PCIIRQROUTENTRY buffer[8] = {};
        int count = 0;
        EXPECT_EQ(0, extend_irq_route_table(known, 1, buffer, 8, &count));
        ASSERT_EQ(4, count);
        std::set<int> located;
        for (int i = 0; i < count; ++i)
        {
            located.insert(buffer[i].bus << 8 | buffer[i].devfn);
            EXPECT_EQ(4, buffer[i].slot);
            EXPECT_EQ(0x61, buffer[i].pin[0].link);
        }
        EXPECT_EQ((std::set<int>{busDevfn(2, 0, 0), busDevfn(2, 1, 0), busDevfn(2, 4, 0),
                                 busDevfn(5, 3, 0)}),
                  located);

        // Beyond the capacity entries are counted, not stored.
        _PCIIRQROUTENTRY small[3] = {};
        small[2].slot = 0xEE;
        count = 1;
        EXPECT_EQ(0, extend_irq_route_table(known, 1, small, 2, &count));
        EXPECT_EQ(5, count);
        EXPECT_EQ(4, small[1].slot);
        EXPECT_EQ(0xEE, small[2].slot);

        count = 0;
        EXPECT_EQ(0, add_to_irq_route_table(buffer, 8, &count));
        EXPECT_EQ(0, count) << "no ROM table: nothing to extend from";
    };
    onSimulatedServer(machine, check);
}

TEST(ProcPCI, VlmpciWithMoreEntryLinesThanCapacityReportsAllOfThem)
{
    Sim::Machine machine;
    for (std::uint8_t line = 0; line < 8; ++line)
        machine.addRoutingLine({{line, static_cast<std::uint8_t>(line + 1), 2},
                                static_cast<std::uint8_t>(10 + line),
                                static_cast<std::uint8_t>(0x60 + line),
                                0xDEB8});
    auto check = [](Sim::Machine&)
    {
        _PCIIRQROUTENTRY buffer[8];
        std::memset(buffer, 0xEE, sizeof buffer);
        int count = 5;
        EXPECT_EQ(0, pci_irq_route_table_from_proc(buffer, &count));
        EXPECT_EQ(8, count);
        EXPECT_EQ(0, buffer[0].bus);
        EXPECT_EQ(1 << 3, buffer[0].devfn) << "the function is not kept";
        EXPECT_EQ(0x60, buffer[0].pin[0].link);
        EXPECT_EQ(0xDEB8, buffer[0].pin[0].bitmap);
        EXPECT_EQ(10, buffer[0].slot);
        EXPECT_EQ(0, buffer[0].pin[1].link);
        EXPECT_EQ(4, buffer[4].bus);
        EXPECT_EQ(14, buffer[4].slot);
        EXPECT_EQ(0xEE, buffer[5].bus) << "beyond the capacity";

        count = 5;
        EXPECT_EQ(0, pci_irq_route_table(buffer, &count));
        EXPECT_EQ(8, count);

        count = 0;
        EXPECT_EQ(0, pci_irq_route_table_from_proc(nullptr, &count));
        EXPECT_EQ(8, count);

        std::ofstream(rooted("/proc/vlmpci")) << "no opening parenthesis\n00 01 00 60 deb8 1\n";
        count = 5;
        EXPECT_EQ(0, pci_irq_route_table_from_proc(buffer, &count));
        EXPECT_EQ(0, count);

        fs::remove(rooted("/proc/vlmpci"));
        count = 5;
        EXPECT_EQ(-1, pci_irq_route_table_from_proc(buffer, &count));
        EXPECT_LT(pci_irq_route_table(buffer, &count), 0) << "neither the file nor a ROM table";
        EXPECT_EQ(5, count);
    };
    onSimulatedServer(machine, check);
}
