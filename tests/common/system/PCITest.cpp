#include "common/system/PCI.h"

#include "tests/support/SimulatedServer.h"

#include <tuple>
#include <vector>

using Common::System::PCI;

namespace
{
typedef std::tuple<int, int, int> Location;

PCI::_PCI_ADDRESS address(int bus, int device, int function)
{
    PCI::_PCI_ADDRESS at = {static_cast<unsigned char>(bus), static_cast<unsigned char>(device),
                            static_cast<unsigned char>(function), 0};
    return at;
}

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

        PCI::_PCI_ADDRESS at;
        EXPECT_TRUE(PCI::InitializeEnumerate(at));
        EXPECT_EQ(-128, at.flags);
        ASSERT_TRUE(PCI::EnumerateDevice(at));
        EXPECT_EQ(0, at.bus);
        EXPECT_EQ(0, at.device);
        EXPECT_EQ(0, at.function);
        EXPECT_EQ(0, at.flags) << "the marker is cleared by the first step";
    };
    onSimulatedServer(machine, check);

    Sim::Machine empty;
    auto checkEmpty = [](Sim::Machine&) { EXPECT_TRUE(enumerateAll().empty()); };
    onSimulatedServer(empty, checkEmpty);
}

TEST(PCI, ConfigurationAccessAtEveryWidthThroughMechanismOne)
{
    Sim::Machine machine;
    machine.addFunction({2, 3, 1}, 0x1077, 0x2432, 0x0C, 0x04).setDword(0x40, 0x11223344);
    auto check = [](Sim::Machine& machine)
    {
        PCI::_PCI_ADDRESS hba = address(2, 3, 1);
        unsigned short vendor = 0, device = 0;
        unsigned char base = 0, sub = 0, byte = 0;
        unsigned int dword = 0;
        EXPECT_TRUE(PCI::VendorID(hba, vendor));
        EXPECT_TRUE(PCI::DeviceID(hba, device));
        EXPECT_TRUE(PCI::ClassCode(hba, base));
        EXPECT_TRUE(PCI::SubclassCode(hba, sub));
        EXPECT_EQ(0x1077, vendor);
        EXPECT_EQ(0x2432, device);
        EXPECT_EQ(0x0C, base);
        EXPECT_EQ(0x04, sub);
        EXPECT_TRUE(PCI::Read(hba, 0x43, byte));
        EXPECT_EQ(0x11, byte);

        EXPECT_TRUE(PCI::Write(hba, 0x42, static_cast<unsigned short>(0xBEEF)));
        EXPECT_TRUE(PCI::Read(hba, 0x40, dword));
        EXPECT_EQ(0xBEEF3344u, dword);
        EXPECT_TRUE(PCI::Write(hba, 0x00, 0xFFFFFFFFu));
        EXPECT_TRUE(PCI::VendorID(hba, vendor));
        EXPECT_EQ(0x1077, vendor) << "identification is read-only";

        EXPECT_TRUE(PCI::Read(address(2, 3, 2), 0x00, dword));
        EXPECT_EQ(0xFFFFFFFFu, dword) << "an absent function reads all ones";

        unsigned long before = machine.bridge().accesses();
        EXPECT_FALSE(PCI::Read(hba, 0x100, dword));
        EXPECT_FALSE(PCI::Write(hba, 0x1C0, byte));
        EXPECT_EQ(before, machine.bridge().accesses()) << "offsets past 255 never reach the bus";
    };
    onSimulatedServer(machine, check);
}

TEST(PCI, SubsystemValueHasTheSubsystemVendorInTheHighHalf)
{
    EXPECT_EQ(0x56781234u, PCI::SwapOrderDWord(0x12345678u));
    Sim::Machine machine;
    machine.addFunction({0, 4, 0}, 0x1000, 0x0060, 0x01, 0x04).subsystem(0x0E11, 0x4091);
    auto check = [](Sim::Machine&)
    {
        unsigned int id = 0;
        EXPECT_TRUE(PCI::SubsystemID(address(0, 4, 0), id));
        EXPECT_EQ(0x0E114091u, id);
    };
    onSimulatedServer(machine, check);
}

TEST(PCI, WithoutIOPrivilegeNothingIsFoundAndNoPortIsTouched)
{
    Sim::Machine machine;
    machine.addFunction({0, 0, 0}, 0x8086, 0x3406, 0x06, 0x00);
    machine.faults().noIOPrivilege = true;
    auto check = [](Sim::Machine& machine)
    {
        unsigned short vendor = 0;
        EXPECT_TRUE(PCI::VendorID(address(0, 0, 0), vendor));
        EXPECT_EQ(0xFFFF, vendor);
        EXPECT_TRUE(enumerateAll().empty());
        EXPECT_EQ(0ul, machine.bridge().accesses());
    };
    onSimulatedServer(machine, check);
}

TEST(PCI, SlotComesFromTheRoutingTableAndIsReportedThroughTheOutValueOnly)
{
    Sim::Machine machine;
    machine.addRoutingLine({{0, 3, 0}, 1});
    machine.addRoutingLine({{0, 4, 0}, 2});
    machine.addRoutingLine({{6, 1, 0}, 5});
    auto check = [](Sim::Machine&)
    {
        unsigned char slot = 99;
        EXPECT_FALSE(PCI::Slot(address(0, 4, 0), slot));
        EXPECT_EQ(2, slot);
        EXPECT_FALSE(PCI::Slot(address(0, 3, 1), slot));
        EXPECT_EQ(1, slot) << "the function is not compared";
        EXPECT_FALSE(PCI::Slot(address(6, 1, 0), slot));
        EXPECT_EQ(5, slot);
        EXPECT_FALSE(PCI::Slot(address(0, 5, 0), slot));
        EXPECT_EQ(0, slot) << "unlisted";
    };
    onSimulatedServer(machine, check);

    Sim::Machine noTable;
    auto checkNoTable = [](Sim::Machine&)
    {
        unsigned char slot = 99;
        EXPECT_FALSE(PCI::Slot(address(0, 4, 0), slot));
        EXPECT_EQ(255, slot);
    };
    onSimulatedServer(noTable, checkNoTable);
}

TEST(PCI, SlotLooksAtTheFirstFiftyRoutingEntriesOnly)
{
    Sim::Machine machine;
    for (int line = 0; line < 55; ++line)
        machine.addRoutingLine(
            {{static_cast<std::uint8_t>(1 + line / 32), static_cast<std::uint8_t>(line % 32), 0},
             static_cast<std::uint8_t>(line + 1)});
    auto check = [](Sim::Machine&)
    {
        unsigned char slot = 0;
        PCI::Slot(address(1, 9, 0), slot);
        EXPECT_EQ(10, slot);
        PCI::Slot(address(2, 17, 0), slot); // line 50, the last one kept
        EXPECT_EQ(50, slot);
        PCI::Slot(address(2, 20, 0), slot); // line 53
        EXPECT_EQ(0, slot);
    };
    onSimulatedServer(machine, check);
}
