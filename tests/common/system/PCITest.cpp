#include "common/system/PCI.h"

#include "tests/support/SimulatedServer.h"

#include <tuple>
#include <vector>

using Common::System::PCI;

namespace
{
typedef std::tuple<int, int, int> Location;

std::vector<Location> enumerateAll()
{
    std::vector<Location> found;
    PCI::_PCI_ADDRESS at;
    PCI::InitializeEnumerate(at);
    while (PCI::EnumerateDevice(at))
        found.emplace_back(at.bus, at.device, at.function);
    return found;
}
} // namespace

TEST(PCI, EnumerationVisitsEveryPresentFunctionOnceInOrderAcrossBuses)
{
    Sim::Machine machine;
    machine.addFunction({0x80, 2, 0}, 0x14E4, 0x1639, 0x02, 0x00);
    machine.addFunction({0, 0, 0}, 0x8086, 0x3406, 0x06, 0x00);
    machine.addBridge({0, 0x1E, 0}, 3);
    machine.addFunction({3, 1, 0}, 0x1000, 0x0072, 0x01, 0x07);
    machine.addFunction({0, 2, 5}, 0x8086, 0x2922, 0x01, 0x06); // function 5 alone
    machine.addFunction({0, 2, 1}, 0x8086, 0x2923, 0x0C, 0x03);
    machine.addFunction({0xFF, 31, 7}, 0x8086, 0x2C70, 0x06, 0x00);
    auto check = [](Sim::Machine&)
    {
        std::vector<Location> expected = {{0, 0, 0}, {0, 2, 1},    {0, 2, 5},    {0, 0x1E, 0},
                                          {3, 1, 0}, {0x80, 2, 0}, {0xFF, 31, 7}};
        EXPECT_EQ(expected, enumerateAll());
    };
    onSimulatedServer(machine, check);

    Sim::Machine empty;
    onSimulatedServer(empty, [](Sim::Machine&) { EXPECT_TRUE(enumerateAll().empty()); });
}

TEST(PCI, ConfigurationAccessAtEveryWidthThroughMechanismOne)
{
    Sim::Machine machine;
    machine.addFunction({2, 3, 1}, 0x1077, 0x2432, 0x0C, 0x04).setDword(0x40, 0x11223344);
    // The identifiers' getters are checked through allstorage.nsp.
    auto check = [](Sim::Machine& machine)
    {
        PCI::_PCI_ADDRESS hba = {2, 3, 1, 0};
        PCI::_PCI_ADDRESS absent = {2, 3, 2, 0};
        unsigned short vendor = 0;
        unsigned char byte = 0;
        unsigned int dword = 0;
        EXPECT_TRUE(PCI::Read(hba, 0x43, byte));
        EXPECT_EQ(0x11, byte);
        EXPECT_TRUE(PCI::Write(hba, 0x42, static_cast<unsigned short>(0xBEEF)));
        EXPECT_TRUE(PCI::Read(hba, 0x40, dword));
        EXPECT_EQ(0xBEEF3344u, dword);
        EXPECT_TRUE(PCI::Read(absent, 0x00, dword));
        EXPECT_EQ(0xFFFFFFFFu, dword) << "an absent function reads all ones";

        unsigned long before = machine.bridge().accesses();
        EXPECT_FALSE(PCI::Read(hba, 0x100, dword));
        EXPECT_FALSE(PCI::Write(hba, 0x1C0, byte));
        EXPECT_EQ(before, machine.bridge().accesses()) << "offsets past 255 never reach the bus";

        machine.faults().noIOPrivilege = true;
        EXPECT_TRUE(PCI::VendorID(hba, vendor));
        EXPECT_EQ(0xFFFF, vendor) << "without I/O privilege nothing is found";
        EXPECT_TRUE(enumerateAll().empty());
        EXPECT_EQ(before, machine.bridge().accesses());
    };
    onSimulatedServer(machine, check);
}

TEST(PCI, SlotComesFromTheFirstFiftyRoutingEntriesThroughTheOutValueOnly)
{
    Sim::Machine machine;
    machine.addRoutingLine({{0, 3, 0}, 1});
    for (int line = 1; line < 55; ++line)
        machine.addRoutingLine(
            {{static_cast<std::uint8_t>(1 + line / 32), static_cast<std::uint8_t>(line % 32), 0},
             static_cast<std::uint8_t>(line + 1)});
    auto check = [](Sim::Machine&)
    {
        const struct
        {
            PCI::_PCI_ADDRESS at;
            unsigned char slot;
        } cases[] = {
            {{0, 3, 1, 0}, 1},   // the function is not compared
            {{1, 9, 0, 0}, 10},  //
            {{2, 17, 0, 0}, 50}, // line 50, the last one kept
            {{2, 20, 0, 0}, 0},  // line 53
            {{0, 5, 0, 0}, 0},   // unlisted
        };
        for (auto const& c : cases)
        {
            unsigned char slot = 99;
            EXPECT_FALSE(PCI::Slot(c.at, slot));
            EXPECT_EQ(c.slot, slot) << int(c.at.bus) << ":" << int(c.at.device);
        }
    };
    onSimulatedServer(machine, check);

    Sim::Machine noTable;
    onSimulatedServer(noTable,
                      [](Sim::Machine&)
                      {
                          PCI::_PCI_ADDRESS unlisted = {0, 4, 0, 0};
                          unsigned char slot = 99;
                          EXPECT_FALSE(PCI::Slot(unlisted, slot));
                          EXPECT_EQ(255, slot);
                      });
}
