#include "sim/Machine.h"
#include "sim/SimulatedHardware.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace fs = std::filesystem;

namespace
{
std::string readFile(fs::path const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::uint32_t configAddress(int bus, int device, int function, int offset)
{
    return 0x80000000u | bus << 16 | device << 11 | function << 8 | offset;
}
} // namespace

TEST(HostBridge, AnswersMechanismOneOnlyWhileEnabled)
{
    Sim::Machine machine;
    machine.addFunction({1, 2, 3}, 0x1077, 0x2432, 0x0C, 0x04);
    machine.writePort(0xCF8, 4, configAddress(1, 2, 3, 0));
    EXPECT_EQ(configAddress(1, 2, 3, 0), machine.readPort(0xCF8, 4));
    EXPECT_EQ(0x24321077u, machine.readPort(0xCFC, 4));
    EXPECT_EQ(0x24u, machine.readPort(0xCFF, 1));
    machine.writePort(0xCF8, 4, configAddress(1, 2, 3, 0) & 0x7FFFFFFF);
    EXPECT_EQ(0xFFFFFFFFu, machine.readPort(0xCFC, 4)) << "enable bit clear";
    EXPECT_EQ(0xFFu, machine.readPort(0x80, 1)) << "nothing else answers";
    EXPECT_EQ(6ul, machine.bridge().accesses()) << "the bridge counts its own ports only";
}

TEST(HostBridge, HoldsFiveHundredTwelveControllersOnSixteenBuses)
{
    Sim::Machine machine;
    for (int i = 0; i < 512; ++i)
        machine.addFunction({static_cast<std::uint8_t>(0x10 + i / 32),
                             static_cast<std::uint8_t>(i % 32), 0},
                            0x1A2B, static_cast<std::uint16_t>(i), 0x01, 0x07);
    machine.writePort(0xCF8, 4, configAddress(0x1F, 31, 0, 0));
    EXPECT_EQ(0x01FF1A2Bu, machine.readPort(0xCFC, 4));
    machine.writePort(0xCF8, 4, configAddress(0x10, 0, 0, 0));
    EXPECT_EQ(0x00001A2Bu, machine.readPort(0xCFC, 4));

    // Past 31 devices or 7 functions the address has no room: refused, not
    // added where it would never answer.
    EXPECT_THROW(machine.addFunction({0x20, 32, 0}, 0x1A2B, 0, 0x01, 0x07),
                 std::invalid_argument);
    EXPECT_THROW(machine.addFunction({0x20, 0, 8}, 0x1A2B, 0, 0x01, 0x07), std::invalid_argument);
    EXPECT_EQ(512u, machine.bridge().functions().size());
}

TEST(Machine, RefusesASecondDiskOfTheSameName)
{
    Sim::Machine machine;
    machine.addDisk({{3, 0, 0}, "sda", 500107862016ull});
    EXPECT_THROW(machine.addDisk({{4, 0, 0}, "sda", 1000204886016ull}), std::invalid_argument);
    ASSERT_EQ(1u, machine.disks().size());
    EXPECT_EQ(3, machine.disks()[0].controller.bus);
}

TEST(NvramController, SemaphoreIsTakenByReadingZeroAndReleasedByWritingZero)
{
    Sim::Machine machine;
    Sim::NvramController& controller = machine.addNvramController({0, 5, 0});
    EXPECT_EQ(0u, controller.read(0xE1, 1));
    EXPECT_TRUE(controller.semaphoreHeld());
    EXPECT_NE(0u, controller.read(0xE1, 1));
    controller.write(0xE1, 1, 0);
    EXPECT_FALSE(controller.semaphoreHeld());

    controller.holdByFirmware(1000);
    EXPECT_NE(0u, controller.read(0xE0, 4) & 0xFF00) << "held by the firmware";
    machine.clock().advance(1000);
    EXPECT_EQ(0u, controller.read(0xE1, 1));
    EXPECT_EQ(2u, controller.acquisitions());

    std::vector<Sim::RegisterWrite> writes = {{0xE1, 1, 0}};
    EXPECT_EQ(writes, controller.writes());
}

TEST(SimulatedHardware, WritesTheMachinesProcAndSysFiles)
{
    Sim::Machine machine;
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x2922, 0x01, 0x06);
    machine.addEmptyBusDirectory(4);
    machine.addRoutingLine({{0, 0x1F, 2}, 3, 0x62, 0x0C20});
    machine.addDisk({{0, 0x1F, 2}, "sda", 500107862016ull, false});
    machine.addDisk({{0, 0x1F, 2}, "sdb", 0, true});
    fs::path root;
    {
        Sim::SimulatedHardware hardware(machine);
        root = hardware.root();
        std::string config = readFile(root / "proc/bus/pci/00/1f.2");
        ASSERT_EQ(256u, config.size());
        EXPECT_EQ('\x86', config[0]);
        EXPECT_EQ('\x29', config[3]);
        EXPECT_TRUE(fs::is_directory(root / "proc/bus/pci/04"));
        EXPECT_EQ("00fa\t80862922\n", readFile(root / "proc/bus/pci/devices"));
        EXPECT_NE(std::string::npos, readFile(root / "proc/vlmpci").find("00 1f 02 62 0c20  3\n"));

        fs::path controller = root / "sys/bus/pci/devices/0000:00:1f.2";
        EXPECT_TRUE(fs::exists(controller / "host0/target0:0:0/0:0:0:0/block:sda"));
        EXPECT_EQ("976773168\n", readFile(root / "sys/block/sda/size"));
        EXPECT_EQ("1\n", readFile(root / "sys/block/sdb/removable"));
    }
    EXPECT_FALSE(fs::exists(root)) << "the scratch root goes with the backend";
}

TEST(Machine, IplTableListsEntriesWithTheirDescriptions)
{
    Sim::Machine machine;
    machine.installIplTable({{3, {0, 0x1F, 1}, "CD-ROM"}, {2, {4, 0, 0}, "Stratum Array"}});
    std::vector<std::uint8_t> table = machine.memory().read(0xF4000, 4 + 3 * 16);
    EXPECT_EQ("$IPL", std::string(table.begin(), table.begin() + 4));
    EXPECT_EQ(3, table[4]);
    std::uint32_t where = table[12] | table[13] << 8 | table[14] << 16 | table[15] << 24;
    EXPECT_EQ(0u, where >> 24);
    EXPECT_EQ(0x1Fu, (where >> 19) & 0x1F);
    EXPECT_EQ(1u, (where >> 16) & 0x03);
    std::vector<std::uint8_t> text = machine.memory().read(0xF0000 + (where & 0xFFFF), 7);
    EXPECT_EQ(std::string("CD-ROM", 7), std::string(text.begin(), text.end()));
    EXPECT_EQ(2, table[20]);
    EXPECT_EQ(0, table[36]) << "a zero type ends the table";
}

TEST(SimulatedHardware, RomCallsReachServicesAtTheirEntryOnly)
{
    Sim::Machine machine;
    machine.addRomService(0xE1000, Sim::RomReturn::FarCall,
                          [](RomCallRegisters& registers)
                          {
                              registers.ebx = 2;
                              registers.eax &= 0xFFFF00FF;
                          });
    Sim::SimulatedHardware hardware(machine);
    int memory = hardware.openMemory(true);
    auto* rom =
        static_cast<std::uint8_t*>(hardware.mapMemory(memory, 0xA0000, 0x60000, true, true));
    ASSERT_NE(nullptr, rom);

    RomCallRegisters registers = {};
    registers.eax = 0xB101;
    hardware.raiseIOPrivilege();
    hardware.callROM(registers, rom + (0xE1000 - 0xA0000), 2);
    EXPECT_EQ(2u, registers.ebx);
    EXPECT_EQ(0, registers.ah());
    EXPECT_EQ(0u, registers.eflags & 1);

    hardware.callROM(registers, rom + (0xE1004 - 0xA0000), 2);
    EXPECT_EQ(0x86, registers.ah()) << "no service there";
    EXPECT_EQ(1u, registers.eflags & 1);

    EXPECT_TRUE(hardware.unmapMemory(rom, 0x60000));
    EXPECT_TRUE(hardware.closeMemory(memory));
    EXPECT_EQ(0u, hardware.openMemoryHandles());
}
