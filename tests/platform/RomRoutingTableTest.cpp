#include "common/system/PCI.h"
#include "platform/ProcPCI.h"

#include "sim/RomServices.h"
#include "tests/support/SimulatedServer.h"

#include <cstring>

using Common::System::PCI;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(RomRoutingTable, FetchedOnceFromThePciBiosAndCoversDevicesBehindBridges)
{
    // A ROM whose routing table lists a slot bridge and an embedded device; a
    // disk controller sits behind the bridge, and there is no "/proc/vlmpci".
    Sim::Machine machine;
    Sim::RomServices::addStandardRom(machine);
    machine.addFunction({0, 0, 0}, 0x8086, 0x3406, 0x06, 0x00);
    machine.addBridge({0, 3, 0}, 4);
    machine.addFunction({0, 31, 2}, 0x8086, 0x3A20, 0x01, 0x01);
    machine.addFunction({4, 0, 0}, 0x1077, 0x2532, 0x0C, 0x04);
    machine.addRomRoute({{0, 31, 0}, 0, 0x60, 0xDEB8});
    machine.addRomRoute({{0, 3, 0}, 2, 0x62, 0x0C20});
    onSimulatedServer(machine,
                      [](Sim::Machine& server)
                      {
                          _PCIIRQROUTENTRY table[8];
                          int count = 8;
                          ASSERT_EQ(0, pci_irq_route_table(table, &count));
                          ASSERT_EQ(3, count);
                          EXPECT_EQ(0, table[0].bus);
                          EXPECT_EQ(31 << 3, table[0].devfn);
                          EXPECT_EQ(0x60, table[0].pin[0].link);
                          EXPECT_EQ(0xDEB8, table[0].pin[0].bitmap);
                          EXPECT_EQ(3 << 3, table[1].devfn);
                          EXPECT_EQ(2, table[1].slot);
                          EXPECT_EQ(0x0C20, table[1].pin[0].bitmap);
                          EXPECT_EQ(4, table[2].bus) << "the device behind the bridge";
                          EXPECT_EQ(0, table[2].devfn);
                          EXPECT_EQ(2, table[2].slot);

                          PCI::_PCI_ADDRESS behindBridge = {4, 0, 0, 0}, embedded = {0, 31, 0, 0};
                          unsigned char slot = 99;
                          EXPECT_FALSE(PCI::Slot(behindBridge, slot));
                          EXPECT_EQ(2, slot);
                          EXPECT_FALSE(PCI::Slot(embedded, slot));
                          EXPECT_EQ(0, slot) << "embedded";

                          _PCIIRQROUTENTRY copy[2];
                          std::memset(copy, 0xEE, sizeof copy);
                          count = 1;
                          ASSERT_EQ(0, copy_irq_route_table_from_rom_internal(copy, &count));
                          EXPECT_EQ(2, count) << "the ROM's count";
                          EXPECT_EQ(31 << 3, copy[0].devfn);
                          EXPECT_EQ(0xEE, copy[1].bus) << "beyond the capacity";
                          server.addRomRoute({{0, 7, 0}, 3});
                          count = 0;
                          ASSERT_EQ(0, copy_irq_route_table_from_rom_internal(nullptr, &count));
                          EXPECT_EQ(2, count) << "the table kept from the first fetch";
                      });
}

TEST(RomRoutingTable, ATableTooBigForTheBufferIsAFailureKeptForTheProcess)
{
    Sim::Machine machine;
    Sim::RomServices::addStandardRom(machine);
    for (int route = 0; route < 65; ++route)
        machine.addRomRoute(
            {{static_cast<std::uint8_t>(route / 32), static_cast<std::uint8_t>(route % 32), 0},
             static_cast<std::uint8_t>(route)});
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          int count = 4;
                          EXPECT_EQ(-1, copy_irq_route_table_from_rom_internal(nullptr, &count));
                          PCI::_PCI_ADDRESS at = {0, 5, 0, 0};
                          unsigned char slot = 0;
                          PCI::Slot(at, slot);
                          EXPECT_EQ(255, slot) << "no table at all";
                      });
}

TEST(RomRoutingTable, NoneWithoutTheMakersRom)
{
    Sim::Machine machine;
    Sim::RomServices::addPciBios(machine, Sim::RomServices::kPciBios);
    Sim::RomServices::addServiceDirectory(
        machine, Sim::RomServices::kFirstDirectory,
        {{Sim::RomServices::kPciService, Sim::RomServices::kPciBios}});
    machine.addRomRoute({{0, 3, 0}, 2});
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          CaptureStderr();
                          int count = 4;
                          EXPECT_EQ(-1, pci_irq_route_table(nullptr, &count));
                          EXPECT_EQ(-1, pci_irq_route_table(nullptr, &count));
                          EXPECT_EQ("Not a ZR Corvane Server!\n", GetCapturedStderr())
                              << "the ROM is set up once";
                      });
}
