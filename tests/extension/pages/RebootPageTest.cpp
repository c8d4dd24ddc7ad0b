#include "PageRun.h"

#include "CorvaneRom.h"
#include "tests/support/SimulatedServer.h"

#include <string>
#include <vector>

namespace
{
const Sim::PciLocation kController = {0, 5, 0};
const int kRebootMagic = static_cast<int>(0xFEE1DEAD);

const char kChoices[] =
    "{\"ErrorCode\":0,\"Target\":[{\"Name\":\"Default\",\"Value\":\"Default\"},{\"Name\":\"A:\","
    "\"Value\":\"A\"},{\"Name\":\"C:\",\"Value\":\"C\"},{\"Name\":\"CD\",\"Value\":\"CD\"},{"
    "\"Name\":\"PXE\",\"Value\":\"PXE\"},{\"Name\":\"FSET\",\"Value\":\"FSET\"}],\"ColdBoot\":[{"
    "\"Name\":\"Yes\",\"Value\":\"Yes\"},{\"Name\":\"No\",\"Value\":\"No\"}]}";

std::string reboot(const std::string& query)
{
    return runPage("reboot.nsp", query);
}

Sim::NvramController& controllerOf(Sim::Machine& machine)
{
    return dynamic_cast<Sim::NvramController&>(*machine.bridge().find(kController));
}

// The controller's register writes after its presence probe (which ends
// with the first release of the semaphore).
std::vector<Sim::RegisterWrite> writesAfterProbe(Sim::Machine& machine)
{
    std::vector<Sim::RegisterWrite> const& all = controllerOf(machine).writes();
    auto probeEnd = all.begin();
    while (probeEnd != all.end() && probeEnd->offset != 0xE1)
        ++probeEnd;
    return std::vector<Sim::RegisterWrite>(probeEnd == all.end() ? all.end() : probeEnd + 1,
                                           all.end());
}

void expectOneRestart(Sim::Machine& machine)
{
    ASSERT_EQ(1u, machine.reboots().size());
    EXPECT_EQ(kRebootMagic, machine.reboots()[0].magic);
    EXPECT_EQ(0x28121969, machine.reboots()[0].magic2);
    EXPECT_EQ(0x01234567, machine.reboots()[0].command);
}
} // namespace

TEST(RebootPage, QueryListsTheChoicesAndRestartsNothing)
{
    Sim::Machine machine;
    onSimulatedServer(machine,
                      [](Sim::Machine& machine)
                      {
                          EXPECT_EQ(kChoices, reboot("Command=Query"));
                          EXPECT_EQ(kChoices, reboot("command=QUERY"));
                          EXPECT_EQ("", reboot("Command=Restart"));
                          EXPECT_EQ("", reboot(""));
                          EXPECT_TRUE(machine.reboots().empty());
                      });
}

TEST(RebootPage, InvalidChoicesStillRestartAndAnswerOnlyWhenTheRestartFails)
{
    Sim::Machine machine;
    machine.addNvramController(kController);
    onSimulatedServer(machine,
                      [](Sim::Machine& machine)
                      {
                          // The simulated reboot call returns, as a failed one would.
                          EXPECT_EQ("{\"ErrorCode\":0,\"Target\":\"default\",\"ColdBoot\":\"no\"}",
                                    reboot("Command=Perform&Target=default&ColdBoot=no"));
                          expectOneRestart(machine);
                          EXPECT_EQ(0u, machine.reboots()[0].at) << "no wait without a cold boot";
                          EXPECT_TRUE(writesAfterProbe(machine).empty());

                          EXPECT_EQ("{\"ErrorCode\":2,\"Target\":\"B\",\"ColdBoot\":\"No\"}",
                                    reboot("Command=Perform&Target=B&ColdBoot=No"));
                          EXPECT_EQ(2u, machine.reboots().size());
                          EXPECT_EQ("{\"ErrorCode\":3,\"Target\":\"C\",\"ColdBoot\":\"\"}",
                                    reboot("Command=Perform&Target=C"));
                          EXPECT_EQ("{\"ErrorCode\":3,\"Target\":\"\",\"ColdBoot\":\"Maybe\"}",
                                    reboot("Command=Perform&ColdBoot=Maybe"));
                          EXPECT_EQ(4u, machine.reboots().size());
                          EXPECT_TRUE(writesAfterProbe(machine).empty());
                      });
}

TEST(RebootPage, ColdBootThroughTheNVRAMRegistersThenTwoSecondsThenRestart)
{
    Sim::Machine machine;
    machine.addNvramController(kController).setByte(0x94, 0x41);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            Common::string buffer;
            NSP nsp(&buffer);
            bool atRestart = false;
            machine.atReboot(
                [&]
                {
                    atRestart = true;
                    EXPECT_EQ(0u, buffer.size()) << "nothing answered before the restart";
                    EXPECT_FALSE(controllerOf(machine).semaphoreHeld());
                    std::vector<Sim::RegisterWrite> sequence = {{0xA6, 2, 2},    {0xA6, 2, 2},
                                                                {0x94, 1, 0x45}, {0xE1, 1, 0},
                                                                {0xE7, 1, 0xB2}, {0xE1, 1, 0}};
                    EXPECT_EQ(sequence, writesAfterProbe(machine));
                });
            nsp.Execute("GET", "reboot.nsp", "Command=Perform&Target=Default&ColdBoot=Yes");
            EXPECT_TRUE(atRestart);
            expectOneRestart(machine);
            EXPECT_EQ(2000000u, machine.reboots()[0].at);
            EXPECT_EQ("{\"ErrorCode\":0,\"Target\":\"Default\",\"ColdBoot\":\"Yes\"}",
                      std::string(buffer.c_str()));
        });

    // A control register that never reads back what was written does not
    // hold the restart up.
    Sim::Machine stuck;
    stuck.addNvramController(kController).writable(0x94, 0);
    onSimulatedServer(stuck,
                      [](Sim::Machine& machine)
                      {
                          reboot("Command=Perform&Target=Default&ColdBoot=Yes");
                          expectOneRestart(machine);
                          EXPECT_FALSE(controllerOf(machine).semaphoreHeld());
                      });
}

TEST(FSETResetPage, SetupResetThroughTheNVRAMHandshake)
{
    Sim::Machine machine;
    addCorvaneRom(machine);
    machine.addNvramController(kController).setByte(0x8C, 0x01);
    onSimulatedServer(machine,
                      [](Sim::Machine& machine)
                      {
                          EXPECT_EQ("", runPage("fsetreset.nsp", "Command=Query"));
                          EXPECT_EQ("{\"ErrorCode\":0}",
                                    runPage("fsetreset.nsp", "Command=Perform"));
                          std::vector<Sim::RegisterWrite> handshake = {
                              {0xA6, 2, 2}, {0xE1, 1, 0}, {0x8C, 1, 0}, {0xE1, 1, 0}, {0xE1, 1, 0}};
                          EXPECT_EQ(handshake, writesAfterProbe(machine));
                          EXPECT_EQ(0u, machine.clock().now()) << "answered at once";
                          EXPECT_TRUE(machine.reboots().empty());
                      });

    // A controller that never clears the request is given 30 seconds.
    Sim::Machine stuck;
    addCorvaneRom(stuck);
    stuck.addNvramController(kController).writable(0x8C, 0).setByte(0x8C, 0x01);
    onSimulatedServer(stuck,
                      [](Sim::Machine& machine)
                      {
                          EXPECT_EQ("{\"ErrorCode\":0}",
                                    runPage("fsetreset.nsp", "command=perform"));
                          EXPECT_EQ(30000000u, machine.clock().now());
                      });
}

TEST(FSETResetPage, ClearCMOSOverIPMIWithoutVariablesAndNothingWithoutNVRAM)
{
    Sim::Machine machine;
    machine.addManagementController();
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ("{\"ErrorCode\":0}", runPage("fsetreset.nsp", "Command=Perform"));
            auto const& requests = machine.managementController()->requests();
            ASSERT_EQ(1u, requests.size());
            EXPECT_EQ(0x00, requests[0].netfn);
            EXPECT_EQ(0x08, requests[0].cmd);
            // The boot flags for the next boot only with the clear-CMOS flag.
            EXPECT_EQ((std::vector<std::uint8_t>{0x05, 0x80, 0x80, 0x00, 0x00, 0x00}),
                      requests[0].data);
        });

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

TEST(RebootPage, TargetIsWrittenToTheROMVariable)
{
    Sim::Machine machine;
    addCorvaneRom(machine);
    machine.addManagementController();
    machine.addNvramController(kController);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            // No target and no cold boot: nothing but the restart.
            reboot("Command=Perform&Target=Default&ColdBoot=No");
            EXPECT_FALSE(machine.environment().value("RXTBT1").has_value());
            EXPECT_TRUE(machine.managementController()->requests().empty());
            EXPECT_TRUE(writesAfterProbe(machine).empty());
            expectOneRestart(machine);

            const struct
            {
                const char* target;
                std::vector<std::uint8_t> code;
            } kTargets[] = {
                {"A", {1, 0}}, {"C", {3, 0}}, {"cd", {2, 0}}, {"PXE", {64, 0}}, {"FSET", {48, 0}}};
            for (auto const& target : kTargets)
            {
                EXPECT_EQ(
                    std::string("{\"ErrorCode\":0,\"Target\":\"") + target.target +
                        "\",\"ColdBoot\":\"No\"}",
                    reboot(std::string("Command=Perform&ColdBoot=No&Target=") + target.target));
                EXPECT_EQ(target.code, machine.environment().value("RXTBT1")) << target.target;
            }
            EXPECT_TRUE(machine.managementController()->requests().empty());
            EXPECT_EQ(6u, machine.reboots().size());
        });
}

TEST(RebootPage, OneTimeIPMIOverrideAndChassisResetWithoutVariablesOrNVRAM)
{
    Sim::Machine machine;
    machine.addManagementController();
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            Sim::ManagementController& controller = *machine.managementController();
            machine.atReboot(
                [&]
                {
                    ASSERT_EQ(2u, controller.requests().size());
                    EXPECT_EQ(0x08, controller.requests()[0].cmd);
                    // Valid for the next boot only (0x80), CD/DVD selector.
                    EXPECT_EQ((std::vector<std::uint8_t>{0x05, 0x80, 0x14, 0x00, 0x00, 0x00}),
                              controller.requests()[0].data);
                    EXPECT_EQ(0x00, controller.requests()[1].netfn);
                    EXPECT_EQ(0x02, controller.requests()[1].cmd);
                    EXPECT_EQ((std::vector<std::uint8_t>{0x03}), controller.requests()[1].data);
                });
            reboot("Command=Perform&Target=CD&ColdBoot=Yes");
            expectOneRestart(machine);
            EXPECT_EQ(2000000u, machine.reboots()[0].at);

            machine.atReboot(nullptr);
            const struct
            {
                const char* target;
                std::uint8_t selectorByte;
            } kTargets[] = {{"A", 0x3C}, {"C", 0x08}, {"PXE", 0x04}, {"FSET", 0x18}};
            for (auto const& target : kTargets)
            {
                reboot(std::string("Command=Perform&ColdBoot=No&Target=") + target.target);
                EXPECT_EQ((std::vector<std::uint8_t>{0x05, 0x80, target.selectorByte, 0x00, 0x00, 0x00}),
                          controller.requests().back().data)
                    << target.target;
            }
        });
}
