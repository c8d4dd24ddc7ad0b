#include "common/system/NVRAM.h"

#include "tests/support/SimulatedServer.h"

#include <algorithm>
#include <vector>

using Common::System::NVRAM;

TEST(NVRAM, ProbeLocksReadsAndWritesOnTheController)
{
    Sim::Machine machine;
    machine.addFunction({0, 0, 0}, 0x8086, 0x3406, 0x06, 0x00);
    // Right identifiers, but its scratch byte does not answer: not the controller.
    machine.addNvramController({0, 3, 0}, 0xB203).ignoreScratchWrites();
    machine.addNvramController({0, 5, 0}, 0x00D7).setByte(0x80, 0xA7);
    auto check = [](Sim::Machine& machine)
    {
        ASSERT_TRUE(NVRAM::Supported());
        auto& controller = dynamic_cast<Sim::NvramController&>(*machine.bridge().find({0, 5, 0}));
        EXPECT_EQ(0xA7, controller.config()[0x80]) << "scratch byte restored";
        EXPECT_FALSE(controller.semaphoreHeld());
        std::vector<Sim::RegisterWrite> probe = {
            {0xA6, 2, 0}, {0x80, 1, 0x55}, {0x80, 1, 0xA7}, {0xE1, 1, 0}};
        EXPECT_EQ(probe, controller.writes());

        unsigned long afterProbe = machine.bridge().accesses();
        EXPECT_TRUE(NVRAM::Supported());
        EXPECT_EQ(afterProbe, machine.bridge().accesses()) << "the answer is kept";

        unsigned char byte = 0;
        unsigned short word = 0;
        unsigned int dword = 0;
        EXPECT_TRUE(NVRAM::Write(0x94, static_cast<unsigned char>(0x04)));
        EXPECT_TRUE(NVRAM::Write(0xB0, 0xCAFEF00Du));
        EXPECT_TRUE(NVRAM::Read(0x94, byte));
        EXPECT_TRUE(NVRAM::Read(0xB2, word));
        EXPECT_TRUE(NVRAM::Read(0xB0, dword));
        EXPECT_EQ(0x04, byte);
        EXPECT_EQ(0xCAFE, word);
        EXPECT_EQ(0xCAFEF00Du, dword);
        EXPECT_FALSE(controller.semaphoreHeld());
        auto const& writes = controller.writes();
        auto releases = std::count_if(writes.begin(), writes.end(),
                                      [](Sim::RegisterWrite const& w) { return w.offset == 0xE1; });
        EXPECT_EQ(1 + 5, releases) << "each access released the semaphore";

        EXPECT_FALSE(NVRAM::UnlockSemaphore()) << "nothing held";
        ASSERT_TRUE(NVRAM::LockSemaphore());
        unsigned long afterFirst = machine.bridge().accesses();
        EXPECT_TRUE(NVRAM::LockSemaphore());
        EXPECT_TRUE(NVRAM::UnlockSemaphore());
        EXPECT_TRUE(controller.semaphoreHeld());
        EXPECT_EQ(afterFirst, machine.bridge().accesses());
        EXPECT_TRUE(NVRAM::UnlockSemaphore());
        EXPECT_FALSE(controller.semaphoreHeld());

        EXPECT_FALSE(NVRAM::Read(0x100, byte)) << "no such configuration register";
        EXPECT_TRUE(controller.semaphoreHeld());

        EXPECT_TRUE(NVRAM::UnlockSemaphore());

        // A semaphore held by the firmware is given up after five seconds.
        controller.holdByFirmware();
        std::uint64_t start = machine.clock().now();
        EXPECT_FALSE(NVRAM::Read(0x94, byte));
        std::uint64_t waited = machine.clock().now() - start;
        EXPECT_GE(waited, 5000000u);
        EXPECT_LT(waited, 5010000u);
        EXPECT_FALSE(NVRAM::Write(0x94, byte));
        EXPECT_FALSE(NVRAM::LockSemaphore());

        // Released by the firmware two seconds from now: taken then.
        controller.holdByFirmware(machine.clock().now() + 2000000);
        start = machine.clock().now();
        EXPECT_TRUE(NVRAM::LockSemaphore());
        EXPECT_GE(machine.clock().now() - start, 2000000u);
        EXPECT_LT(machine.clock().now() - start, 2010000u);
        EXPECT_TRUE(NVRAM::UnlockSemaphore());
    };
    onSimulatedServer(machine, check);
}

TEST(NVRAM, AbsentControllerIsNotSupportedAndTheBusIsNeverTouchedAgain)
{
    Sim::Machine machine;
    machine.addFunction({0, 0, 0}, 0x8086, 0x3406, 0x06, 0x00);
    machine.addFunction({0, 4, 0}, 0x0E11, 0xB178, 0x01, 0x04); // maker's, another device
    machine.addNvramController({255, 5, 0});                     // on a bus never probed
    auto check = [](Sim::Machine& machine)
    {
        EXPECT_FALSE(NVRAM::Supported());
        unsigned long afterProbe = machine.bridge().accesses();
        unsigned char byte = 0;
        unsigned short word = 0;
        unsigned int dword = 0;
        EXPECT_FALSE(NVRAM::LockSemaphore() || NVRAM::UnlockSemaphore() ||
                     NVRAM::Read(0x94, byte) || NVRAM::Read(0x94, word) ||
                     NVRAM::Read(0x94, dword) || NVRAM::Write(0x94, byte) ||
                     NVRAM::Write(0x94, word) || NVRAM::Write(0x94, dword));
        EXPECT_EQ(afterProbe, machine.bridge().accesses());
    };
    onSimulatedServer(machine, check);

    Sim::Machine deep;
    deep.addNvramController({254, 31, 0}, 0xA0F0);
    onSimulatedServer(deep, [](Sim::Machine&) { EXPECT_TRUE(NVRAM::Supported()); });
}
