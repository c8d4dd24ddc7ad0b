#include "CorvaneRom.h"

#include "common/system/NVRAM.h"
#include "platform/Hardware.h"
#include "tests/extension/TestSupport.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <sys/mount.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <regex>
#include <string>
#include <thread>

using TestSupport::runPage;

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
        machine.installSmbios(tables());
        machine.addManagementController().replyDelayMicroseconds = c.delay;
        machine.managementController()->silent = c.silent;
        onSimulatedServer(
            machine,
            [&c](Sim::Machine& machine)
            {
                Timed hardware = timed(machine, "hardware.nsp", "Command=Query");
                EXPECT_NE(std::string::npos,
                          hardware.page.find(std::string("\"WD100Support\":\"") + c.heard))
                    << hardware.page;
                EXPECT_LE(hardware.microseconds, 6 * kSecond);
                Timed order = timed(machine, "setbootorder.nsp", "Command=Query");
                EXPECT_TRUE(c.silent ? order.page == "{\"ErrorCode\":1}" : hasFields(order.page))
                    << order.page;
                EXPECT_LE(order.microseconds, c.orderLimit);
            });
    }

    const std::vector<std::uint8_t> replies[] = {
        {},
        {0x00},
        {0x00, 0x01},
        {0x00, 0x01, 0x05},
        {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
        {0x00, 0x01, 0x05, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}};
    for (const std::vector<std::uint8_t>& reply : replies)
    {
        Sim::Machine machine;
        machine.installSmbios(tables());
        machine.addManagementController();
        onSimulatedServer(
            machine,
            [&reply](Sim::Machine& machine)
            {
                // The probe is answered; what follows is not.
                EXPECT_NE(
                    std::string::npos,
                    runPage("hardware.nsp", "Command=Query").find("\"WD100Support\":\"Yes\""));
                Sim::ManagementController& controller = *machine.managementController();
                for (const char* query : {"Command=Query", "Command=Perform&Order=cdrom"})
                {
                    controller.answerNextWith(reply);
                    controller.answerNextWith(reply);
                    Timed order = timed(machine, "setbootorder.nsp", query);
                    EXPECT_TRUE(hasFields(order.page)) << order.page;
                    EXPECT_LE(order.microseconds, 10 * kSecond);
                }
                controller.answerNextWith(reply);
                EXPECT_TRUE(hasFields(runPage("fsetreset.nsp", "Command=Perform")));
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
    onSimulatedServer(machine,
                      [](Sim::Machine& machine)
                      {
                          ASSERT_TRUE(Common::System::NVRAM::Supported());
                          auto& controller =
                              dynamic_cast<Sim::NvramController&>(*machine.bridge().find(kNvram));
                          controller.holdByFirmware();
                          Timed restart = timed(machine, "reboot.nsp",
                                                "Command=Perform&Target=Default&ColdBoot=Yes");
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
    namespace fs = std::filesystem;
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
        [](Sim::Machine&)
        {
            const fs::path sys(Common::Platform::hardware().path("/sys").c_str());
            const fs::path proc(Common::Platform::hardware().path("/proc").c_str());
            TestSupport::TempDir saved;
            fs::copy(sys, fs::path(saved.path()) / "sys",
                     fs::copy_options::recursive | fs::copy_options::copy_symlinks);
            fs::copy(proc, fs::path(saved.path()) / "proc",
                     fs::copy_options::recursive | fs::copy_options::copy_symlinks);
            std::atomic<bool> done{false};
            std::thread vandal(
                [&]
                {
                    std::error_code ignored;
                    for (int turn = 0; !done; ++turn)
                    {
                        const fs::path& tree = turn % 2 ? sys : proc;
                        fs::remove_all(tree, ignored);
                        std::this_thread::yield();
                        fs::copy(fs::path(saved.path()) / tree.filename(), tree,
                                 fs::copy_options::recursive | fs::copy_options::copy_symlinks,
                                 ignored);
                    }
                });
            TestSupport::TempDir out;
            const std::string boards = TestSupport::contentFolder() + "cfg/allboards.xml";
            TestSupport::putContent("cfg/allboards.xml", "<AllBoards><PCI/></AllBoards>");
            for (int run = 0; run < 40; ++run)
            {
                const std::string file = out.file("storage" + std::to_string(run) + ".xml");
                const std::string answer =
                    runPage("allstorage.nsp",
                            "Command=Create&AllBoardsXML=" + boards + "&AllStorageXML=" + file);
                EXPECT_TRUE(answer == "{\"ErrorCode\":0}" || answer == "{\"ErrorCode\":1}")
                    << answer;
                if (answer == "{\"ErrorCode\":0}")
                {
                    const std::string written = TestSupport::readFile(file);
                    EXPECT_NE(std::string::npos, written.find("</AllStorage>")) << written;
                }
            }
            done = true;
            vandal.join();
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
    std::smatch m;
    return std::regex_search(
               progress, m,
               std::regex("\"TotalBytes\":\"([0-9]+)\",\"CurrentByte\":\"([0-9]+)\"")) &&
           m[1] == m[2];
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
        EXPECT_FALSE(std::filesystem::exists(full.file(platform)))
            << platform << ": a cut file was left";
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
    std::filesystem::create_directories(source.file("tree"));
    TestSupport::writeFile(source.file("tree/big.bin"), std::string(40000, 'b'));
    TestSupport::writeFile(source.file("tree/small.txt"), std::string(100, 's'));
    full.fill(16384);

    const std::string copied = systemPage("Command=Copy&Source=" + source.file("tree/big.bin") +
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
        std::filesystem::create_directories(folder);
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
        EXPECT_TRUE(!entry.is_regular_file() || entry.file_size() == 20000u) << entry.path();
}
