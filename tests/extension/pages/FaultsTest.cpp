#include "CorvaneServer.h"

#include "common/system/NVRAM.h"
#include "tests/extension/TestSupport.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

using TestSupport::runPage;

// Faults of the machine: each page still answers within its (simulated) bound.
namespace
{
const std::uint64_t kSecond = 1000000;
const Sim::PciLocation kNvram = {0, 5, 0};

// The page's answer, checked to be given within `limit` (simulated time).
std::string within(std::uint64_t limit, Sim::Machine& machine, const char* page,
                   const std::string& query)
{
    const std::uint64_t before = machine.clock().now();
    std::string answer = runPage(page, query);
    EXPECT_LE(machine.clock().now() - before, limit) << page << "?" << query;
    EXPECT_TRUE(answer.rfind("{\"ErrorCode\":", 0) == 0 && answer.back() == '}') << answer;
    return answer;
}
} // namespace

// The probe's reply limit is five seconds: a reply just under it is heard,
// one just over it or none is not; each later request waits at most its own
// limit, and garbage or short replies still give an answer.
TEST(ControllerFaults, SlowSilentAndGarbageRepliesStillGiveAnAnswerInTime)
{
    const struct
    {
        std::uint64_t delay;
        bool silent;
        const char* heard;
        std::uint64_t orderLimit;
    } cases[] = {{0, true, "No", 6 * kSecond},
                 {4900000, false, "Yes", 12 * kSecond},
                 {5100000, false, "No", 12 * kSecond}};
    for (auto const& c : cases)
    {
        Sim::Machine machine;
        machine.installSmbios(corvaneTables());
        machine.addManagementController().replyDelayMicroseconds = c.delay;
        machine.managementController()->silent = c.silent;
        onSimulatedServer(
            machine,
            [&c](Sim::Machine& machine)
            {
                EXPECT_NE(std::string::npos,
                          within(6 * kSecond, machine, "hardware.nsp", "Command=Query")
                              .find(std::string("\"WD100Support\":\"") + c.heard));
                const std::string order =
                    within(c.orderLimit, machine, "setbootorder.nsp", "Command=Query");
                EXPECT_TRUE(!c.silent || order == "{\"ErrorCode\":1}") << order;
            });
    }

    const std::vector<std::uint8_t> replies[] = {
        {},
        {0x00},
        {0x00, 0x01},
        {0x00, 0x01, 0x05},
        {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
        {0x00, 0x01, 0x05, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}};
    Sim::Machine machine;
    machine.installSmbios(corvaneTables());
    machine.addManagementController();
    onSimulatedServer(
        machine,
        [&replies](Sim::Machine& machine)
        {
            EXPECT_NE(std::string::npos,
                      runPage("hardware.nsp", "Command=Query").find("\"WD100Support\":\"Yes\""));
            Sim::ManagementController& controller = *machine.managementController();
            for (const std::vector<std::uint8_t>& reply : replies)
            {
                for (const char* query : {"Command=Query", "Command=Perform&Order=cdrom"})
                {
                    controller.answerNextWith(reply);
                    controller.answerNextWith(reply);
                    within(10 * kSecond, machine, "setbootorder.nsp", query);
                }
                controller.answerNextWith(reply);
                within(10 * kSecond, machine, "fsetreset.nsp", "Command=Perform");
            }
        });
}

// A store that stays busy is given up after its retries; a semaphore the
// firmware never releases (each NVRAM step waits 5 s) does not stop a restart.
TEST(RomFaults, BusyStoreAndHeldSemaphoreAreGivenUp)
{
    Sim::Machine machine;
    machine.installSmbios(corvaneTables());
    addCorvaneRom(machine);
    machine.addNvramController(kNvram);
    machine.installIplTable({{2, {0, 31, 2}, "SATA disk"}, {3, {0, 31, 2}, "CD drive"}});
    machine.environment().set("RXHIPL", {0x01, 0x02});
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_NE(std::string::npos,
                      runPage("hardware.nsp", "Command=Query").find("\"EVSupport\":\"Yes\""));
            machine.environment().answerBusy(UINT_MAX);
            EXPECT_EQ(std::string::npos, within(100 * kSecond, machine, "setbootorder.nsp",
                                                "Command=Perform&Order=cdrom")
                                             .find("\"cdrom\""));
            EXPECT_EQ((std::vector<std::uint8_t>{0x01, 0x02}),
                      machine.environment().value("RXHIPL"));
            within(100 * kSecond, machine, "reboot.nsp", "Command=Perform&Target=CD&ColdBoot=No");
            ASSERT_TRUE(Common::System::NVRAM::Supported());
            dynamic_cast<Sim::NvramController&>(*machine.bridge().find(kNvram)).holdByFirmware();
            within(60 * kSecond, machine, "reboot.nsp",
                   "Command=Perform&Target=Default&ColdBoot=Yes");
            EXPECT_EQ(2u, machine.reboots().size());
            within(60 * kSecond, machine, "fsetreset.nsp", "Command=Perform");
        });
}

TEST(FileFaults, SysfsAndProcEntriesVanishingWhileTheInventoryWalksThem)
{
    Sim::Machine machine;
    machine.installSmbios(corvaneTables());
    for (std::uint8_t bus = 3; bus < 7; ++bus)
    {
        machine.addFunction({bus, 0, 0}, 0x103C, 0x323A, 0x01, 0x04).subsystem(0x0E11, 0x3245);
        for (int disk = 0; disk < 4; ++disk)
            machine.addDisk({{bus, 0, 0},
                             "sd" + std::string(1, static_cast<char>('a' + (bus - 3) * 4 + disk)),
                             146778685440ull});
    }
    onSimulatedServer(
        machine,
        [](Sim::Machine& server)
        {
            ScratchFolder out;
            const std::string boards = TestSupport::contentFolder() + "cfg/allboards.xml";
            TestSupport::putContent("cfg/allboards.xml", "<AllBoards><PCI/></AllBoards>");
            for (int run = 0; run < 40; ++run)
            {
                server.faults().vanishingEvery = 2 + run % 9;
                const std::string file = out.path("storage" + std::to_string(run) + ".xml");
                const std::string answer =
                    runPage("allstorage.nsp",
                            "Command=Create&AllBoardsXML=" + boards + "&AllStorageXML=" + file);
                if (answer == "{\"ErrorCode\":0}")
                    EXPECT_NE(std::string::npos, TestSupport::readFile(file).find("</AllStorage>"));
                else
                    EXPECT_EQ("{\"ErrorCode\":1}", answer);
            }
        },
        60);
}
