#include "common/system/IO.h"

#include "tests/support/SimulatedServer.h"

using Common::System::IO;

TEST(IO, PortAccessAtEachWidthReportsSuccessWithOrWithoutPrivilege)
{
    Sim::Machine machine;
    machine.addFunction({0, 0, 0}, 0x8086, 0x3406, 0x06, 0x00);
    auto check = [](Sim::Machine& machine)
    {
        unsigned int dword = 0;
        unsigned short word = 0;
        unsigned char byte = 0;
        EXPECT_TRUE(IO::Write(0x10CF8, 0x80000000u)) << "only the low 16 bits name the port";
        EXPECT_TRUE(IO::Read(0xCF8, dword));
        EXPECT_EQ(0x80000000u, dword);
        EXPECT_TRUE(IO::Read(0xCFE, word));
        EXPECT_EQ(0x3406, word);
        EXPECT_TRUE(IO::Read(0xCFC, byte));
        EXPECT_EQ(0x86, byte);
        EXPECT_TRUE(IO::Write(0xCFC, static_cast<unsigned short>(0)));
        EXPECT_TRUE(IO::Write(0xCFC, static_cast<unsigned char>(0)));
        EXPECT_EQ(6ul, machine.bridge().accesses());

        machine.faults().noIOPrivilege = true;
        EXPECT_TRUE(IO::Read(0xCF8, dword));
        EXPECT_TRUE(IO::Read(0xCFC, word));
        EXPECT_TRUE(IO::Read(0xCFC, byte));
        EXPECT_TRUE(IO::Write(0xCF8, 0u));
        EXPECT_EQ(0xFFFFFFFFu, dword);
        EXPECT_EQ(0xFFFF, word);
        EXPECT_EQ(0xFF, byte);
        EXPECT_EQ(6ul, machine.bridge().accesses()) << "no port touched without privilege";
    };
    onSimulatedServer(machine, check);
}
