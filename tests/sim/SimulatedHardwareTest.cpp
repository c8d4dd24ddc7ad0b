#include "sim/Machine.h"
#include "sim/SimulatedHardware.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <string>

namespace
{
std::string read(Sim::SimulatedHardware& hardware, char const* path)
{
    Common::string contents;
    return hardware.readFile(path, contents) ? text(contents) : "(missing)";
}

// The names of a folder's entries, a folder's with "/" and a link's with "@".
std::string listing(Sim::SimulatedHardware& hardware, char const* path)
{
    Common::list<Common::Platform::FolderEntry> entries;
    if (!hardware.listFolder(path, entries))
        return "(missing)";
    std::string names;
    for (auto it = entries.begin(); it != entries.end(); ++it)
        names += std::string(it->name.c_str()) + (it->symbolicLink ? "@" : it->folder ? "/" : "") +
                 " ";
    return names;
}

std::uint32_t configAddress(int bus, int device, int function, int offset)
{
    return 0x80000000u | bus << 16 | device << 11 | function << 8 | offset;
}
} // namespace

TEST(SimulatedHardware, KernelFilesShowTheMachineAsItIsNow)
{
    Sim::Machine machine;
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x2922, 0x01, 0x06);
    machine.addEmptyBusDirectory(4);
    machine.addRoutingLine({{0, 0x1F, 2}, 3, 0x62, 0x0C20});
    machine.addDisk({{0, 0x1F, 2}, "sda", 500107862016ull, false});
    machine.addDisk({{0, 0x1F, 2}, "sdb", 0, true, true});
    Sim::SimulatedHardware hardware(machine);
    EXPECT_EQ("00/ 04/ devices ", listing(hardware, "/proc/bus/pci"));
    EXPECT_EQ("1f.2 ", listing(hardware, "/proc/bus/pci/00"));
    EXPECT_EQ("00fa\t80862922\n", read(hardware, "/proc/bus/pci/devices"));
    EXPECT_EQ(256u, read(hardware, "/proc/bus/pci/00/1f.2").size());
    EXPECT_NE(std::string::npos, read(hardware, "/proc/vlmpci").find("00 1f 02 62 0c20  3\n"));

    EXPECT_EQ("host0/ subsystem@ ", listing(hardware, "/sys/bus/pci/devices/0000:00:1f.2"));
    EXPECT_EQ("block/ block:sda@ ",
              listing(hardware, "/sys/bus/pci/devices/0000:00:1f.2/host0/target0:0:0/0:0:0:0"));
    EXPECT_EQ("976773168\n", read(hardware, "/sys/block/sda/size"));
    EXPECT_EQ("1\n", read(hardware, "/sys/block/sdb/removable")) << "through /sys/block's link";
    EXPECT_EQ("block/ block:sda@ ", listing(hardware, "/sys/block/sdb/device"))
        << "links followed on the way and at the end";

    machine.addFunction({2, 0, 0}, 0x14E4, 0x1639, 0x02, 0x00);
    EXPECT_EQ("00/ 02/ 04/ devices ", listing(hardware, "/proc/bus/pci")) << "shown at once";
    EXPECT_EQ("(missing)", read(hardware, "/proc/bus/pci/00"));
    EXPECT_EQ("(missing)", listing(hardware, "/sys/block/sda/size"));
    machine.faults().noProcBusPci = true;
    EXPECT_EQ("(missing)", listing(hardware, "/proc/bus/pci"));
}

TEST(SimulatedHardware, ConfigurationFilesAndPortsReachTheSameFunctionWhileEnabled)
{
    Sim::Machine machine;
    machine.addFunction({1, 2, 3}, 0x1077, 0x2432, 0x0C, 0x04).procFileSize(0x48);
    Sim::SimulatedHardware hardware(machine);
    ASSERT_TRUE(hardware.raiseIOPrivilege());
    hardware.writePort32(0xCF8, configAddress(1, 2, 3, 0x44));
    hardware.writePort8(0xCFC, 0x5A);

    int config = hardware.openPCIConfig(1, 2, 3, O_RDWR);
    ASSERT_GE(config, 0);
    unsigned char byte = 0;
    ASSERT_TRUE(hardware.readPCIConfig(config, 0x44, &byte, 1));
    EXPECT_EQ(0x5A, byte) << "a port write shows in the file";
    byte = 0xA5;
    ASSERT_TRUE(hardware.writePCIConfig(config, 0x44, &byte, 1));
    EXPECT_EQ(0xA5, hardware.readPort8(0xCFC)) << "a file write reaches the bus";
    hardware.closePCIConfig(config);
    EXPECT_FALSE(hardware.readPCIConfig(config, 0, &byte, 1)) << "closed";
    int readOnly = hardware.openPCIConfig(1, 2, 3, O_RDONLY);
    EXPECT_FALSE(hardware.writePCIConfig(readOnly, 0x44, &byte, 1));

    machine.writePort(0xCF8, 4, configAddress(1, 2, 3, 0));
    EXPECT_EQ(0x24321077u, machine.readPort(0xCFC, 4));
    EXPECT_EQ(0x24u, machine.readPort(0xCFF, 1));
    machine.writePort(0xCF8, 4, configAddress(1, 2, 3, 0) & 0x7FFFFFFF);
    EXPECT_EQ(0xFFFFFFFFu, machine.readPort(0xCFC, 4)) << "enable bit clear";
    EXPECT_EQ(0xFFu, machine.readPort(0x80, 1)) << "nothing else answers";
}

TEST(SimulatedHardware, MappingsShareTheMemoryWithTheProtectionAskedFor)
{
    Sim::Machine machine;
    machine.memory().write(0xF0000, std::string("ROM"));
    int status = TestSupport::runInChild(
        [&machine]
        {
            Sim::SimulatedHardware hardware(machine);
            int memory = hardware.openMemory(false);
            auto* readOnly = static_cast<volatile std::uint8_t*>(
                hardware.mapMemory(memory, 0xF0000, 4096, false, false));
            auto* writable =
                static_cast<std::uint8_t*>(hardware.mapMemory(memory, 0xF0000, 4096, true, false));
            CHILD_CHECK(readOnly != nullptr && writable != nullptr && readOnly[0] == 'R');
            writable[1] = 'A';
            CHILD_CHECK(readOnly[1] == 'A' && *machine.memory().at(0xF0001) == 'A');
            std::signal(SIGSEGV, [](int) { _exit(42); });
            readOnly[2] = 'X';
            return 0;
        });
    EXPECT_EQ(42, status) << "a write through a read-only mapping faults, as on a server";
}

TEST(SimulatedHardware, TheBackendIsChosenOnceForTheProcess)
{
    Sim::Machine machine;
    int status = TestSupport::runInChild(
        [&machine]
        {
            Sim::SimulatedHardware first(machine);
            CHILD_CHECK(first.install());
            CHILD_CHECK(&Common::Platform::hardware() == &first);
            Sim::Machine other;
            Sim::SimulatedHardware second(other);
            CHILD_CHECK(!second.install());
            CHILD_CHECK(&Common::Platform::hardware() == &first);
            return 0;
        });
    EXPECT_EQ(0, status);
}
