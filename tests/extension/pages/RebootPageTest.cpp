#include "CorvaneServer.h"
#include "tests/support/IpmiLog.h"
#include "tests/support/PageRun.h"
#include "tests/support/SimulatedServer.h"

#include <algorithm>
#include <string>
#include <vector>

using TestSupport::runPage;

namespace
{
typedef std::vector<std::uint8_t> Bytes;
const Sim::PciLocation kController = {0, 5, 0};

// Each target's code in "RXTBT1", and what goes to the management controller
// without the ROM's variables: boot flags valid for the next boot only, then
// a chassis reset.
const struct
{
    const char* target;
    Bytes code;
    const char* sent;
} kTargets[] = {{"A", {1, 0}, "0008:05803C00*3 0002:03"},
                {"C", {3, 0}, "0008:05800800*3 0002:03"},
                {"cd", {2, 0}, "0008:05801400*3 0002:03"},
                {"PXE", {64, 0}, "0008:05800400*3 0002:03"},
                {"FSET", {48, 0}, "0008:05801800*3 0002:03"}};

std::string restarted(const std::string& target, const std::string& coldBoot, int code = 0)
{
    return "{\"ErrorCode\":" + std::to_string(code) + ",\"Target\":\"" + target +
           "\",\"ColdBoot\":\"" + coldBoot + "\"}";
}

Sim::NvramController& controllerOf(Sim::Machine& machine)
{
    return dynamic_cast<Sim::NvramController&>(*machine.bridge().find(kController));
}

// The controller's register writes after its presence probe, which ends
// with the first release of the semaphore (0xE1).
std::vector<Sim::RegisterWrite> writesAfterProbe(Sim::Machine& machine)
{
    std::vector<Sim::RegisterWrite> const& all = controllerOf(machine).writes();
    auto probeEnd = std::find_if(all.begin(), all.end(), [](auto& w) { return w.offset == 0xE1; });
    return std::vector<Sim::RegisterWrite>(probeEnd + (probeEnd != all.end()), all.end());
}

// The restarts so far are all the reboot call with the restart command.
void expectRestarts(Sim::Machine& machine, std::size_t count)
{
    ASSERT_EQ(count, machine.reboots().size());
    for (auto const& reboot : machine.reboots())
        EXPECT_TRUE(reboot.magic == static_cast<int>(0xFEE1DEAD) && reboot.magic2 == 0x28121969 &&
                    reboot.command == 0x01234567);
}
} // namespace

// The simulated reboot call returns, as a failed one would: only then does
// the page answer. The target goes to "RXTBT1"; a cold boot writes the NVRAM
// registers, waits two seconds and restarts with the semaphore free.
TEST(RebootPage, QueryListsTheChoicesAndPerformRecordsTheTargetAndRestartsColdThroughNVRAM)
{
    Sim::Machine machine;
    addCorvaneRom(machine);
    machine.addManagementController();
    machine.addNvramController(kController).setByte(0x94, 0x41);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ("{\"ErrorCode\":0,\"Target\":[{\"Name\":\"Default\",\"Value\":\"Default\"},"
                      "{\"Name\":\"A:\",\"Value\":\"A\"},{\"Name\":\"C:\",\"Value\":\"C\"},"
                      "{\"Name\":\"CD\",\"Value\":\"CD\"},{\"Name\":\"PXE\",\"Value\":\"PXE\"},"
                      "{\"Name\":\"FSET\",\"Value\":\"FSET\"}],\"ColdBoot\":[{\"Name\":\"Yes\","
                      "\"Value\":\"Yes\"},{\"Name\":\"No\",\"Value\":\"No\"}]}",
                      runPage("reboot.nsp", "command=QUERY"));
            EXPECT_EQ("", runPage("reboot.nsp", "Command=Restart"));
            expectRestarts(machine, 0);
            runPage("reboot.nsp", "Command=Perform&Target=Default&ColdBoot=No");
            EXPECT_FALSE(machine.environment().value("RXTBT1").has_value());
            for (auto const& t : kTargets)
            {
                EXPECT_EQ(restarted(t.target, "No"),
                          runPage("reboot.nsp",
                                  std::string("Command=Perform&ColdBoot=No&Target=") + t.target));
                EXPECT_EQ(t.code, machine.environment().value("RXTBT1")) << t.target;
            }
            const std::pair<const char*, std::string> invalid[] = {
                {"Target=default&ColdBoot=no", restarted("default", "no")},
                {"Target=B&ColdBoot=No", restarted("B", "No", 2)},
                {"Target=C", restarted("C", "", 3)},
                {"ColdBoot=Maybe", restarted("", "Maybe", 3)}};
            for (auto const& c : invalid)
                EXPECT_EQ(c.second,
                          runPage("reboot.nsp", std::string("Command=Perform&") + c.first));
            expectRestarts(machine, 10);
            EXPECT_TRUE(machine.managementController()->requests().empty());
            EXPECT_TRUE(writesAfterProbe(machine).empty());

            const std::uint64_t before = machine.clock().now();
            Common::string buffer;
            NSP nsp(&buffer);
            machine.atReboot(
                [&]
                {
                    EXPECT_EQ(0u, buffer.size());
                    EXPECT_FALSE(controllerOf(machine).semaphoreHeld());
                    std::vector<Sim::RegisterWrite> sequence = {{0xA6, 2, 2},    {0xA6, 2, 2},
                                                                {0x94, 1, 0x45}, {0xE1, 1, 0},
                                                                {0xE7, 1, 0xB2}, {0xE1, 1, 0}};
                    EXPECT_EQ(sequence, writesAfterProbe(machine));
                });
            nsp.Execute("GET", "reboot.nsp", "Command=Perform&Target=Default&ColdBoot=Yes");
            expectRestarts(machine, 11);
            EXPECT_EQ(0u, machine.reboots()[0].at) << "no wait without a cold boot";
            EXPECT_EQ(before + 2000000u, machine.reboots()[10].at);
            EXPECT_EQ(restarted("Default", "Yes"), std::string(buffer.c_str()));

            // A control register that never reads back what was written does
            // not hold the restart up.
            machine.atReboot(nullptr);
            controllerOf(machine).setByte(0x94, 0x41).writable(0x94, 0);
            runPage("reboot.nsp", "Command=Perform&Target=Default&ColdBoot=Yes");
            expectRestarts(machine, 12);
            EXPECT_FALSE(controllerOf(machine).semaphoreHeld());
        });
}

// Without the ROM's variables the reboot target goes to a one-time boot
// override and a chassis reset over IPMI, a setup reset to the boot flags
// for the next boot with clear-CMOS.
TEST(RebootAndFSETResetPages, BootFlagsThroughTheManagementController)
{
    Sim::Machine ipmi;
    ipmi.addManagementController();
    onSimulatedServer(
        ipmi,
        [](Sim::Machine& machine)
        {
            for (auto const& t : kTargets)
            {
                const std::size_t from = machine.managementController()->requests().size();
                runPage("reboot.nsp",
                        std::string("Command=Perform&ColdBoot=Yes&Target=") + t.target);
                EXPECT_EQ(t.sent, ipmiLog(machine, from)) << t.target;
            }
            expectRestarts(machine, 5);
            EXPECT_EQ(2000000u, machine.reboots()[0].at);
            const std::size_t from = machine.managementController()->requests().size();
            EXPECT_EQ("{\"ErrorCode\":0}", runPage("fsetreset.nsp", "Command=Perform"));
            EXPECT_EQ("0008:05808000*3", ipmiLog(machine, from));
        });
}

TEST(FSETResetPage, SetupResetThroughTheNVRAMHandshake)
{
    Sim::Machine machine;
    addCorvaneRom(machine);
    machine.addNvramController(kController).setByte(0x8C, 0x01);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ("", runPage("fsetreset.nsp", "Command=Query"));
            EXPECT_EQ("{\"ErrorCode\":0}", runPage("fsetreset.nsp", "Command=Perform"));
            std::vector<Sim::RegisterWrite> handshake = {
                {0xA6, 2, 2}, {0xE1, 1, 0}, {0x8C, 1, 0}, {0xE1, 1, 0}, {0xE1, 1, 0}};
            EXPECT_EQ(handshake, writesAfterProbe(machine));
            EXPECT_EQ(0u, machine.clock().now()) << "answered at once";
            expectRestarts(machine, 0);
            // A controller that never clears the request is given 30 seconds.
            controllerOf(machine).setByte(0x8C, 0x01).writable(0x8C, 0);
            EXPECT_EQ("{\"ErrorCode\":0}", runPage("fsetreset.nsp", "command=perform"));
            EXPECT_EQ(30000000u, machine.clock().now());
        });

    // Variables but no NVRAM controller: nothing is done.
    Sim::Machine withoutNVRAM;
    addCorvaneRom(withoutNVRAM);
    withoutNVRAM.addManagementController();
    onSimulatedServer(withoutNVRAM,
                      [](Sim::Machine& machine)
                      {
                          EXPECT_EQ("{\"ErrorCode\":2}",
                                    runPage("fsetreset.nsp", "Command=Perform"));
                          EXPECT_TRUE(machine.managementController()->requests().empty());
                      });
}
