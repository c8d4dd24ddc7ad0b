#include "CorvaneRom.h"
#include "PageRun.h"

#include "common/system/NVRAM.h"
#include "platform/Hardware.h"
#include "tests/extension/TestSupport.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <chrono>
#include <climits>
#include <filesystem>
#include <string>
#include <thread>

// Faults of the machine and of the file system under the pages: each page
// still answers within its bound, the process lives on, and nothing
// half-written is left where a page reported success.

namespace
{
const std::uint64_t kSecond = 1000000;
const Sim::PciLocation kNvram = {0, 5, 0};

Sim::SmbiosBuilder tables()
{
    return Sim::SmbiosBuilder()
        .bios("Velmar", "VQ14", "05/05/2011")
        .system("Velmar", "Corvane 2U", "CZ2113ABCD")
        .systemId("ZR0A0725");
}

// The simulated time the page took, and its answer.
struct Timed
{
    std::string page;
    std::uint64_t microseconds;
};

Timed timed(Sim::Machine& machine, const char* page, const std::string& query)
{
    const std::uint64_t before = machine.clock().now();
    std::string answer = runPage(page, query);
    return {answer, machine.clock().now() - before};
}

bool hasFields(const std::string& page)
{
    return page.rfind("{\"ErrorCode\":", 0) == 0 && page.back() == '}';
}
} // namespace

TEST(ControllerFaults, SilentControllerIsAbsentAfterTheReplyLimit)
{
    Sim::Machine machine;
    machine.installSmbios(tables());
    machine.addManagementController().silent = true;
    onSimulatedServer(machine,
                      [](Sim::Machine& machine)
                      {
                          Timed hardware = timed(machine, "hardware.nsp", "Command=Query");
                          EXPECT_NE(std::string::npos,
                                    hardware.page.find("\"WD100Support\":\"No\""));
                          EXPECT_LE(hardware.microseconds, 6 * kSecond);
                          Timed order = timed(machine, "setbootorder.nsp", "Command=Query");
                          EXPECT_EQ("{\"ErrorCode\":1}", order.page);
                          EXPECT_LE(order.microseconds, 6 * kSecond);
                      });
}

TEST(ControllerFaults, ReplyJustUnderTheFiveSecondLimitIsHeardJustOverIsNot)
{
    for (std::uint64_t delay : {4900000ull, 5100000ull})
    {
        Sim::Machine machine;
        machine.installSmbios(tables());
        machine.addManagementController().replyDelayMicroseconds = delay;
        onSimulatedServer(machine,
                          [delay](Sim::Machine& machine)
                          {
                              Timed hardware = timed(machine, "hardware.nsp", "Command=Query");
                              const bool heard = delay < 5 * kSecond;
                              EXPECT_NE(std::string::npos,
                                        hardware.page.find(heard ? "\"WD100Support\":\"Yes\""
                                                                 : "\"WD100Support\":\"No\""))
                                  << hardware.page;
                              EXPECT_LE(hardware.microseconds, 6 * kSecond);
                              Timed order = timed(machine, "setbootorder.nsp", "Command=Query");
                              EXPECT_TRUE(hasFields(order.page)) << order.page;
                              // Each request waits at most its own limit.
                              EXPECT_LE(order.microseconds, 12 * kSecond);
                          });
    }
}

TEST(ControllerFaults, GarbageAndShortRepliesGiveAnAnswer)
{
    const std::vector<std::vector<std::uint8_t>> replies = {
        {}, {0x00}, {0x00, 0x01}, {0x00, 0x01, 0x05}, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
        {0x00, 0x01, 0x05, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}};
    for (const std::vector<std::uint8_t>& reply : replies)
    {
        Sim::Machine machine;
        machine.installSmbios(tables());
        machine.addManagementController();
        onSimulatedServer(machine,
                          [&reply](Sim::Machine& machine)
                          {
                              // The probe is answered; what follows is not.
                              EXPECT_NE(std::string::npos,
                                        runPage("hardware.nsp", "Command=Query")
                                            .find("\"WD100Support\":\"Yes\""));
                              Sim::ManagementController& controller =
                                  *machine.managementController();
                              for (const char* query :
                                   {"Command=Query", "Command=Perform&Order=cdrom"})
                              {
                                  controller.answerNextWith(reply);
                                  controller.answerNextWith(reply);
                                  Timed order = timed(machine, "setbootorder.nsp", query);
                                  EXPECT_TRUE(hasFields(order.page)) << order.page;
                                  EXPECT_LE(order.microseconds, 10 * kSecond);
                              }
                              controller.answerNextWith(reply);
                              Timed reset = timed(machine, "fsetreset.nsp", "Command=Perform");
                              EXPECT_TRUE(hasFields(reset.page)) << reset.page;
                          });
    }
}

TEST(RomFaults, EnvironmentStoreBusyForeverIsGivenUpAfterItsRetries)
{
    Sim::Machine machine;
    machine.installSmbios(tables());
    addCorvaneRom(machine);
    machine.installIplTable({{2, {0, 31, 2}, "SATA disk"}, {3, {0, 31, 2}, "CD drive"}});
    machine.environment().set("RXHIPL", {0x01, 0x02});
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            // Known as supported first; then the store stays busy.
            EXPECT_NE(std::string::npos,
                      runPage("hardware.nsp", "Command=Query").find("\"EVSupport\":\"Yes\""));
            machine.environment().answerBusy(UINT_MAX);
            Timed order = timed(machine, "setbootorder.nsp", "Command=Perform&Order=cdrom");
            // The answer shows the order as read back: the old one.
            EXPECT_TRUE(hasFields(order.page)) << order.page;
            EXPECT_EQ(std::string::npos, order.page.find("\"cdrom\"")) << order.page;
            EXPECT_LE(order.microseconds, 100 * kSecond);
            EXPECT_EQ((std::vector<std::uint8_t>{0x01, 0x02}),
                      machine.environment().value("RXHIPL").value_or(std::vector<std::uint8_t>{}));
            Timed restart = timed(machine, "reboot.nsp", "Command=Perform&Target=CD&ColdBoot=No");
            EXPECT_TRUE(hasFields(restart.page)) << restart.page;
            EXPECT_LE(restart.microseconds, 100 * kSecond);
        });
}

TEST(RomFaults, NvramSemaphoreNeverReleasedDoesNotHoldTheRestartUp)
{
    Sim::Machine machine;
    machine.addNvramController(kNvram);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            ASSERT_TRUE(Common::System::NVRAM::Supported());
            auto& controller = dynamic_cast<Sim::NvramController&>(*machine.bridge().find(kNvram));
            controller.holdByFirmware();
            Timed restart =
                timed(machine, "reboot.nsp", "Command=Perform&Target=Default&ColdBoot=Yes");
            EXPECT_TRUE(hasFields(restart.page)) << restart.page;
            EXPECT_EQ(1u, machine.reboots().size());
            // Every NVRAM step of the cold boot waits its 5 seconds for the
            // semaphore in vain: the restart comes late, but it comes.
            EXPECT_LE(restart.microseconds, 60 * kSecond);
            Timed reset = timed(machine, "fsetreset.nsp", "Command=Perform");
            EXPECT_TRUE(hasFields(reset.page)) << reset.page;
            EXPECT_LE(reset.microseconds, 60 * kSecond);
        });
}

TEST(FileFaults, SysfsAndProcEntriesVanishingWhileTheInventoryWalksThem)
{
    Sim::Machine machine;
    machine.installSmbios(tables());
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
            TestSupport::TempDir out;
            const std::string boards = TestSupport::contentFolder() + "cfg/allboards.xml";
            TestSupport::putContent("cfg/allboards.xml", "<AllBoards><PCI/></AllBoards>");
            for (int run = 0; run < 40; ++run)
            {
                server.faults().vanishingEvery = 2 + run % 9;
                const std::string file = out.file("storage" + std::to_string(run) + ".xml");
                const std::string answer = runPage(
                    "allstorage.nsp", "Command=Create&AllBoardsXML=" + boards + "&AllStorageXML=" + file);
                EXPECT_TRUE(answer == "{\"ErrorCode\":0}" || answer == "{\"ErrorCode\":1}") << answer;
                if (answer == "{\"ErrorCode\":0}")
                {
                    const std::string written = TestSupport::readFile(file);
                    EXPECT_NE(std::string::npos, written.find("</AllStorage>")) << written;
                }
            }
        },
        60);
}

namespace
{
// A small tmpfs of its own, mounted for the test's life (root only).
class SmallFileSystem
{
public:
    explicit SmallFileSystem(const char* size)
    {
        if (::geteuid() != 0)
            m_refusal = "not root: no file system of its own can be mounted";
        else if (::mount("tidewell-full", m_dir.path().c_str(), "tmpfs", MS_NOSUID | MS_NODEV,
                         (std::string("size=") + size).c_str()) != 0)
            m_refusal = std::string("mount refused: ") + std::strerror(errno);
    }
    ~SmallFileSystem()
    {
        if (m_refusal.empty())
            ::umount2(m_dir.path().c_str(), MNT_DETACH);
    }
    // Why there is none; empty when mounted.
    const std::string& refusal() const { return m_refusal; }
    std::string file(const std::string& name) const { return m_dir.file(name); }
    // Fills all but about `spare` bytes.
    void fill(std::size_t spare)
    {
        std::FILE* filler = std::fopen(file("filler").c_str(), "wb");
        std::string block(1024, 'f');
        while (std::fwrite(block.data(), 1, block.size(), filler) == block.size() &&
               std::fflush(filler) == 0)
        {
        }
        std::fclose(filler);
        std::filesystem::resize_file(file("filler"),
                                     std::filesystem::file_size(file("filler")) - spare);
    }

private:
    TestSupport::TempDir m_dir{"tidewell-full"};
    std::string m_refusal;
};

std::string systemPage(const std::string& query)
{
    return runPage("system.nsp", query);
}

// The last progress answer of the copy under `key`, polled to its end.
std::string copyEnd(const std::string& key)
{
    std::string last;
    for (int poll = 0; poll < 2000; ++poll)
    {
        last = systemPage("Command=CopyThreadProgress&Key=" + key);
        if (last.find("\"ReturnCode\":\"0\"") != std::string::npos || last == "{\"ErrorCode\":1}")
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return last;
}

// "CurrentByte" equals "TotalBytes": the copy reports every byte copied.
bool reportsEveryByte(const std::string& progress)
{
    auto value = [&](const std::string& name)
    {
        std::size_t at = progress.find("\"" + name + "\":\"");
        return at == std::string::npos
                   ? std::string("?")
                   : progress.substr(at + name.size() + 4,
                                     progress.find('"', at + name.size() + 4) - at - name.size() - 4);
    };
    return value("CurrentByte") == value("TotalBytes");
}
} // namespace

TEST(FileFaults, DiskFullWhileAnAnswerFileIsWrittenIsReportedAndLeavesNoHalfFile)
{
    SmallFileSystem full("64k");
    if (!full.refusal().empty())
        GTEST_SKIP() << full.refusal();
    TestSupport::TempDir roomy;
    const std::string settings = "&FullName=Ops&OrgName=Tidewell+Operations&ComputerName=node7";
    for (const char* platform : {"W2K8_X64", "W2K3"})
    {
        const std::string query = std::string("Platform=") + platform + settings + "&Filename=";
        ASSERT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"0\"}",
                  runPage("unattended.nsp", query + roomy.file(platform)));
        const std::string complete = TestSupport::readFile(roomy.file(platform));
        full.fill(complete.size() / 2);
        const std::string answer = runPage("unattended.nsp", query + full.file(platform));
        EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"1\"}", answer) << platform;
        EXPECT_FALSE(TestSupport::exists(full.file(platform))) << platform << ": a cut file was left";
        std::filesystem::remove(full.file("filler"));
        std::filesystem::remove(full.file(platform));
    }
}

TEST(FileFaults, DiskFullWhileACopyIsWrittenIsReported)
{
    SmallFileSystem full("64k");
    if (!full.refusal().empty())
        GTEST_SKIP() << full.refusal();
    TestSupport::TempDir source;
    TestSupport::makeDirectories(source.file("tree"));
    TestSupport::writeFile(source.file("tree/big.bin"), std::string(40000, 'b'));
    TestSupport::writeFile(source.file("tree/small.txt"), std::string(100, 's'));
    full.fill(16384);

    const std::string copied =
        systemPage("Command=Copy&Source=" + source.file("tree/big.bin") +
                   "&Destination=" + full.file("big.bin"));
    EXPECT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"0\"}", copied) << "no success for a cut copy";

    ASSERT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"1\"}",
              systemPage("Command=CopyThread&Key=full&Source=" + source.file("tree") +
                         "&Destination=" + full.file("tree")));
    const std::string end = copyEnd("full");
    EXPECT_EQ(0u, end.find("{\"ErrorCode\":0,\"ReturnCode\":\"0\"")) << end;
    EXPECT_FALSE(reportsEveryByte(end)) << end;
}

TEST(FileFaults, BackgroundCopyWhoseSourceDisappearsEnds)
{
    TestSupport::TempDir dir;
    for (int file = 0; file < 200; ++file)
    {
        const std::string folder = dir.file("src/d" + std::to_string(file % 10));
        TestSupport::makeDirectories(folder);
        TestSupport::writeFile(folder + "/f" + std::to_string(file), std::string(20000, 'x'));
    }
    ASSERT_EQ("{\"ErrorCode\":0,\"ReturnCode\":\"1\"}",
              systemPage("Command=CopyThread&Key=gone&Source=" + dir.file("src") +
                         "&Destination=" + dir.file("dst")));
    std::filesystem::remove_all(dir.file("src"));
    const auto started = std::chrono::steady_clock::now();
    const std::string end = copyEnd("gone");
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(20));
    EXPECT_EQ(0u, end.find("{\"ErrorCode\":0,\"ReturnCode\":\"0\"")) << end;
    EXPECT_EQ("{\"ErrorCode\":1}", systemPage("Command=CopyThreadProgress&Key=gone"));
    // Whatever was reported done is whole.
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir.file("dst")))
        if (entry.is_regular_file())
            EXPECT_EQ(20000u, entry.file_size()) << entry.path() << " " << end;
}
