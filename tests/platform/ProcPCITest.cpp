#include "platform/ProcPCI.h"

#include "tests/support/SimulatedServer.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <string>

namespace
{
int busDevfn(int bus, int device, int function)
{
    return bus << 8 | device << 3 | function;
}

std::multiset<int> walkAll()
{
    std::multiset<int> found;
    _PCI_ITER iter;
    for (int value = first_pci_device(&iter); value >= 0; value = next_pci_device(&iter))
        found.insert(value);
    return found;
}

int decodedCount(std::string const& text)
{
    _PCIIRQROUTENTRY table[4];
    int count = 4;
    EXPECT_EQ(0, pci_irq_route_table_from_text(text.data(), text.size(), table, &count));
    return count;
}
} // namespace

TEST(ProcPCI, VlmpciTextGivesTheEntryLinesAfterItsHeader)
{
    const std::string text = "Velmar PCI IRQ routing table (version 1.0)\n"
                             "bus dev fn link map  slot\n"
                             "00 01 02 60 deb8 10\n"
                             "04 05 00 61 0c20  3\n"
                             "05 06 00 62 0c20  4\n"
                             ")\n"
                             "01 01 00 60 deb8  1\n";
    _PCIIRQROUTENTRY table[3];
    std::memset(table, 0xEE, sizeof table);
    int count = 2;
    ASSERT_EQ(0, pci_irq_route_table_from_text(text.data(), text.size(), table, &count));
    EXPECT_EQ(3, count) << "lines beyond the capacity are counted";
    EXPECT_EQ(0, table[0].bus);
    EXPECT_EQ(1 << 3, table[0].devfn) << "the function is not kept";
    EXPECT_EQ(0x60, table[0].pin[0].link);
    EXPECT_EQ(0xDEB8, table[0].pin[0].bitmap);
    EXPECT_EQ(10, table[0].slot);
    EXPECT_EQ(0, table[0].pin[1].link);
    EXPECT_EQ(4, table[1].bus);
    EXPECT_EQ(3, table[1].slot);
    EXPECT_EQ(0xEE, table[2].bus) << "beyond the capacity";

    struct
    {
        std::string text;
        int count;
    } const cases[] = {
        {"", 0},
        {"no opening parenthesis\n00 01 00 60 deb8 1\n", 0},
        {"(\nheader\n00 01 00 60 deb8 1\n", 1},
        {"(\nheader\n" + std::string(100, '0') + "\n)\n", 2}, // read in 80-byte pieces
        {std::string("(\nheader\n00 01\0 00 60 deb8 1\n", 28), 1},
    };
    for (auto const& c : cases)
        EXPECT_EQ(c.count, decodedCount(c.text)) << c.text;
}

TEST(ProcPCI, ConfigurationFilesAreReadAndWrittenExactlyOnTheFunction)
{
    Sim::Machine machine;
    machine.addFunction({0, 2, 0}, 0x8086, 0x2922, 0x01, 0x06).setDword(0x3C, 0x0000010B);
    machine.addFunction({1, 0, 1}, 0x1000, 0x0072, 0x01, 0x07).procFileSize(64);
    onSimulatedServer(
        machine,
        [](Sim::Machine& server)
        {
            unsigned char header[64];
            EXPECT_EQ(0, pci_read_config_header(0, 2, 0, header));
            auto const& config = server.bridge().find({0, 2, 0})->config();
            EXPECT_TRUE(std::equal(header, header + 64, config.begin()));

            unsigned short word = 0;
            EXPECT_EQ(0, pci_read_config_word(1, 0, 1, 0x3E, &word)) << "last word of the file";
            EXPECT_EQ(-1, pci_read_config_word(1, 0, 1, 0x40, &word)) << "past the file's end";
            EXPECT_EQ(0xFFFF, word);
            unsigned int dword = 0;
            EXPECT_EQ(-1, pci_read_config_dword(1, 0, 1, 0x3E, &dword));
            unsigned char bytes[8] = {};
            EXPECT_EQ(-1, pci_read_config(0, 3, 0, 0, bytes, 8)) << "absent function";
            EXPECT_TRUE(std::all_of(bytes, bytes + 8, [](unsigned char b) { return b == 0xFF; }));
            EXPECT_EQ(-1, pci_read_config(0, 2, 0, -4, bytes, 4));

            EXPECT_EQ(0, pci_write_config_dword(0, 2, 0, 0x40, 0xA5A50F0Fu));
            EXPECT_EQ(0, pci_write_config_word(0, 2, 0, 0x44, 0x1234));
            EXPECT_EQ(0, pci_write_config_byte(0, 2, 0, 0x46, 0x56));
            std::vector<Sim::RegisterWrite> writes = {
                {0x40, 4, 0xA5A50F0F}, {0x44, 2, 0x1234}, {0x46, 1, 0x56}};
            EXPECT_EQ(writes, server.bridge().find({0, 2, 0})->writes()) << "reached the bus";
            EXPECT_EQ(0, pci_read_config_dword(0, 2, 0, 0x40, &dword));
            EXPECT_EQ(0xA5A50F0Fu, dword);
            EXPECT_EQ(-1, pci_write_config_byte(4, 0, 0, 0x40, 0x56));

            EXPECT_EQ(0, pci_close(pci_open(0, 2, 0, O_RDONLY)));
        });
}

TEST(ProcPCI, ListingsAndTheWalkEndingAtTheFirstBusWithoutDevices)
{
    Sim::Machine machine;
    machine.addFunction({0, 0, 0}, 0x8086, 0x3406, 0x06, 0x00);
    machine.addFunction({2, 0, 0}, 0x14E4, 0x1639, 0x02, 0x00);
    machine.addFunction({2, 1, 5}, 0x14E4, 0x1639, 0x02, 0x00);
    machine.addFunction({0x80, 0x1F, 7}, 0x8086, 0x2C70, 0x06, 0x00);
    onSimulatedServer(machine,
                      [](Sim::Machine& server)
                      {
                          std::set<int> buses;
                          PCIListing* dir = nullptr;
                          for (int bus = first_bus(&dir); bus >= 0; bus = next_bus(&dir))
                              buses.insert(bus);
                          EXPECT_EQ((std::set<int>{0x00, 0x02, 0x80}), buses) << "not \"devices\"";
                          EXPECT_EQ(nullptr, dir) << "closed at the end";
                          EXPECT_EQ(-1, next_bus(&dir));
                          std::set<int> devfns;
                          for (int devfn = first_device(&dir, 2); devfn >= 0; devfn = next_device(&dir))
                              devfns.insert(devfn);
                          EXPECT_EQ((std::set<int>{0x00, 1 << 3 | 5}), devfns);
                          EXPECT_EQ(0xFF, first_device(&dir, 0x80));
                          EXPECT_EQ(-1, next_device(&dir));
                          EXPECT_EQ(-1, first_device(&dir, 0x33)) << "no such bus";
                          EXPECT_EQ(nullptr, dir);
                          EXPECT_EQ((std::multiset<int>{busDevfn(0, 0, 0), busDevfn(2, 0, 0),
                                                        busDevfn(2, 1, 5), busDevfn(0x80, 0x1F, 7)}),
                                    walkAll());

                          server.addEmptyBusDirectory(1);
                          EXPECT_EQ((std::multiset<int>{busDevfn(0, 0, 0)}), walkAll())
                              << "bus 1 has no devices: the walk ends there";
                          server.faults().noProcBusPci = true;
                          EXPECT_EQ(-1, first_bus(&dir));
                          EXPECT_TRUE(walkAll().empty());
                      });
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
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          const int expected[] = {33, 66, 133, 66, 133, 66, 0};
                          for (int device = 1; device <= 7; ++device)
                              EXPECT_EQ(expected[device - 1], pci_read_config_speed(0, device, 0))
                                  << device;
                          EXPECT_EQ(133, pcix_speed(0, 7, 0, 0x40)) << "unreadable status";
                      });
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
    machine.addRoutingLine({{0, 0x1E, 0}, 4, 0x61, 0xDEB8});
    onSimulatedServer(
        machine,
        [](Sim::Machine& server)
        {
            int table[256];
            EXPECT_EQ(7, compute_predecessor_bridge(table, 256));
            EXPECT_EQ(busDevfn(0, 0x1E, 0), table[2]);
            EXPECT_EQ(busDevfn(2, 4, 0), table[5]);
            EXPECT_EQ(busDevfn(7, 0, 0), table[7]);
            EXPECT_EQ(-1, table[0]);

            _PCIIRQROUTENTRY known[1] = {};
            int count = 1;
            ASSERT_EQ(0, pci_irq_route_table_from_proc(known, &count));
            ASSERT_EQ(1, count) << "from the machine's \"/proc/vlmpci\"";

            // Bus 2 takes the entry of its bridge; bus 5, whose bridge has
            // none, that of the bridge above. Beyond the capacity entries are
            // counted, not stored.
            _PCIIRQROUTENTRY buffer[4] = {};
            buffer[3].slot = 0xEE;
            count = 0;
            EXPECT_EQ(0, extend_irq_route_table(known, 1, buffer, 3, &count));
            EXPECT_EQ(4, count);
            std::set<int> located;
            for (int i = 0; i < 3; ++i)
            {
                located.insert(buffer[i].bus << 8 | buffer[i].devfn);
                EXPECT_EQ(4, buffer[i].slot);
                EXPECT_EQ(0x61, buffer[i].pin[0].link);
            }
            EXPECT_EQ((std::set<int>{busDevfn(2, 0, 0), busDevfn(2, 1, 0), busDevfn(2, 4, 0)}),
                      located);
            EXPECT_EQ(0xEE, buffer[3].slot);

            count = 4;
            EXPECT_EQ(0, pci_irq_route_table(buffer, &count));
            EXPECT_EQ(1, count) << "no ROM table: nothing added behind the bridges";
            server.faults().vanishingEvery = 1;
            EXPECT_EQ(-1, pci_irq_route_table_from_proc(buffer, &count));
            EXPECT_LT(pci_irq_route_table(buffer, &count), 0) << "neither the file nor a ROM";
        });
}
