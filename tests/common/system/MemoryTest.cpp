#include "common/system/Memory.h"
#include "common/system/RomSignature.h"

#include "tests/support/SimulatedServer.h"

#include <vector>

using Common::System::Memory;

namespace
{
Sim::SimulatedHardware& simulated()
{
    return dynamic_cast<Sim::SimulatedHardware&>(Common::Platform::hardware());
}
} // namespace

TEST(Memory, ReadsTheBiosAreaAndMapsMemoryBelowIt)
{
    Sim::Machine machine;
    machine.memory().write(0xFFFF0, std::string("\xEA\x5B\xE0\x00\xF0", 5));
    machine.memory().write(0x9F123, std::string("below"));
    auto check = [](Sim::Machine& machine)
    {
        std::vector<unsigned char> bytes(5, 0);
        EXPECT_TRUE(Memory::Read(0xFFFF0, bytes.data(), 5));
        EXPECT_EQ(0xEA, bytes[0]);
        EXPECT_EQ(0xF0, bytes[4]);
        EXPECT_TRUE(Memory::Read(0x9F123, bytes.data(), 5));
        EXPECT_EQ("below", std::string(bytes.begin(), bytes.end()));
        EXPECT_FALSE(Memory::Read(0xFFFF0, bytes.data(), 32)) << "runs past physical memory";
        EXPECT_FALSE(Memory::Read(0x9F123, nullptr, 5));
        EXPECT_EQ(0u, simulated().openMemoryHandles());

        machine.faults().noMemoryMapping = true;
        EXPECT_TRUE(Memory::Read(0xFFFF0, bytes.data(), 5)) << "the BIOS area is read, not mapped";
        EXPECT_FALSE(Memory::Read(0x9F123, bytes.data(), 5));

        machine.faults().noPhysicalMemory = true;
        EXPECT_FALSE(Memory::Read(0xFFFF0, bytes.data(), 5));
        EXPECT_EQ(0u, simulated().openMemoryHandles());
    };
    onSimulatedServer(machine, check);
}

TEST(RomSignature, NvramSignatureIsReadOnceAndKeptForTheProcess)
{
    Sim::Machine signedMachine;
    signedMachine.signNvram();
    auto checkSignedMachine = [](Sim::Machine& machine)
    {
        EXPECT_TRUE(IsNVRAMSupported());
        machine.memory().write(0xFFFD9, std::string("XXXX"));
        EXPECT_TRUE(IsNVRAMSupported());
    };
    onSimulatedServer(signedMachine, checkSignedMachine);

    Sim::Machine unsignedMachine;
    unsignedMachine.signVelmar();
    auto checkUnsignedMachine = [](Sim::Machine& machine)
    {
        EXPECT_FALSE(IsNVRAMSupported());
        machine.signNvram();
        EXPECT_FALSE(IsNVRAMSupported());
    };
    onSimulatedServer(unsignedMachine, checkUnsignedMachine);
}
