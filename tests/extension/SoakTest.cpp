#include "TestSupport.h"
#include "pages/CorvaneRom.h"

#include "common/GlobalStaticAllocator.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

// A long run of mixed requests through the entry point on one simulated
// server, in one process, as a setup UI that polls for hours makes them.
// Growth of resident memory, descriptors, threads or the memory pool after
// a warm-up is a leak that would end the installation.
//
// TIDEWELL_SOAK_REQUESTS sets the length (100000 for the long form).

using TestSupport::contentFolder;
using TestSupport::get;

namespace
{
const int kDefaultRequests = 10000;
const int kWarmUpRequests = 1000;
const long kResidentSlackKiB = 1024;
// A copy runs on a thread of its own. Under an emulator every thread made
// costs the emulator a few KiB that it keeps (the program's own heap stays
// flat), so copies start as rarely as a user would start them.
const int kRoundsPerCopy = 50;

struct Figures
{
    long residentKiB = 0;
    int descriptors = 0;
    int threads = 0;
    unsigned long poolFree = 0;
};

long statusValue(const char* key)
{
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::string wanted = std::string(key) + ":";
    while (std::getline(status, line))
        if (line.compare(0, wanted.size(), wanted) == 0)
            return std::atol(line.c_str() + wanted.size());
    return -1;
}

int openDescriptors()
{
    int count = 0;
    if (DIR* folder = ::opendir("/proc/self/fd"))
    {
        while (dirent* entry = ::readdir(folder))
            count += entry->d_name[0] != '.';
        ::closedir(folder);
    }
    return count - 1; // the listing's own
}

Figures sample()
{
    Figures now;
    now.residentKiB = statusValue("VmRSS");
    now.descriptors = openDescriptors();
    now.threads = static_cast<int>(statusValue("Threads"));
    for (int segment = 0; segment < 10; ++segment)
        now.poolFree += Common::GlobalStaticAllocator::getFreeSpace(segment);
    return now;
}

// The figures once a finished copy's thread has gone: a joined thread can
// still be leaving the process for a moment.
Figures measure()
{
    Figures now = sample();
    for (int tries = 0; tries < 100; ++tries)
    {
        ::usleep(20000);
        Figures again = sample();
        if (again.threads == now.threads && again.descriptors == now.descriptors)
            break;
        now = again;
    }
    return now;
}

void print(const char* when, const Figures& figures)
{
    std::printf("soak %-8s RSS %ld KiB, %d descriptors, %d threads, pool free %lu bytes\n", when,
                figures.residentKiB, figures.descriptors, figures.threads, figures.poolFree);
}

int requestCount()
{
    const char* text = std::getenv("TIDEWELL_SOAK_REQUESTS");
    const int asked = text != nullptr ? std::atoi(text) : 0;
    return asked > kWarmUpRequests ? asked : kDefaultRequests;
}

void describe(Sim::Machine& machine)
{
    machine.installSmbios(Sim::SmbiosBuilder()
                              .bios("Velmar", "VQ14", "05/05/2011")
                              .system("Velmar", "Corvane 2U", "CZ2113ABCD")
                              .memoryDevice(8192)
                              .systemId("ZR0A0725"));
    addCorvaneRom(machine);
    machine.installIplTable({{2, {0, 31, 2}, "SATA disk"},
                             {3, {0, 31, 2}, "CD drive"},
                             {128, {2, 0, 0}, "Network boot"}});
    machine.addFunction({3, 0, 0}, 0x103C, 0x323A, 0x01, 0x04).subsystem(0x0E11, 0x3245);
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x3A22, 0x01, 0x06);
    machine.addFunction({2, 0, 0}, 0x14E4, 0x1639, 0x02, 0x00);
    machine.addDisk({{3, 0, 0}, "strata!c0d0", 146778685440});
    machine.addDisk({{0, 0x1F, 2}, "sda", 500107862016, false, true});
}

// The files the requests read and write, in a folder of their own under the
// content folder.
struct Scene
{
    std::string folder = contentFolder() + "soak";
    std::string url = "zrmedia://Tidewell/";

    Scene()
    {
        TestSupport::putContent("cfg/allboards.xml",
                                "<AllBoards><PCI><dev id=\"103C323A0E113245\">"
                                "<name>Stratum Array R4e</name></dev></PCI></AllBoards>");
        TestSupport::putContent("soak/style.css", "body { margin: 0 }\n");
        TestSupport::putContent("soak/part.htm", "<p>part</p>");
        TestSupport::putContent("soak/page.htm", "<html><?include \"part.htm\"?></html>");
        TestSupport::putContent("soak/source/a.txt", std::string(3000, 'a'));
        TestSupport::putContent("soak/source/sub/b.txt", std::string(5000, 'b'));
    }
};

// The requests of one round, in the order a UI might make them; the rarer
// ones come every few rounds.
std::vector<std::string> round(const Scene& scene, int number)
{
    const std::string& f = scene.folder;
    std::vector<std::string> urls = {
        "index.nsp",
        "hardware.nsp?Command=Query",
        "system.nsp?Command=Query",
        "system.nsp?Command=FileExists&Target=" + f + "/style.css",
        "system.nsp?Command=DirectoryExists&Target=" + f,
        "system.nsp?Command=CreateDirectory&DirectoryName=" + f + "/made",
        "system.nsp?Command=CreateFile&Filename=" + f + "/made/note.txt&Contents=round+" +
            std::to_string(number),
        "system.nsp?Command=ReadFile&Filename=" + f + "/made/note.txt",
        "setbootorder.nsp?Command=Query",
        "setbootorder.nsp?Command=Perform&Order=" + std::string(number % 2 ? "cdrom" : "hd") +
            "&Order=pxe",
        "reboot.nsp?Command=Query",
        "fsetreset.nsp?Command=Query",
        "ostree.nsp?OSIDList=5b0010,5b0005&Selected=5b0010",
        "unattended.nsp?Platform=W2K8_X64&FullName=Ops&ComputerName=node" +
            std::to_string(number % 7) + "&Filename=" + f + "/answers.xml",
        "system.nsp?Command=ReadFile&Filename=" + f + "/answers.xml",
        "unattended.nsp?Platform=W2K3&FullName=Ops&Filename=" + f + "/answers.txt",
        "soak/style.css",
        "soak/page.htm",
        "system.nsp?Command=Copy&Source=" + f + "/source/a.txt&Destination=" + f + "/made/a.txt",
    };
    if (number % 10 == 3)
        urls.push_back("debug.nsp?Command=Log&Message=round+" + std::to_string(number));
    if (number % 5 == 0)
        urls.push_back("allstorage.nsp?Command=Create&AllBoardsXML=" + contentFolder() +
                       "cfg/allboards.xml&AllStorageXML=" + f + "/allstorage.xml");
    if (number % 5 == 1)
        urls.push_back("soak/allstorage.xml");
    if (number % 25 == 0)
        urls.push_back("system.nsp?Command=Run&Executable=true");
    if (number % 50 == 7)
        urls.push_back("reboot.nsp?Command=Perform&Target=Default&ColdBoot=No");
    return urls;
}

// A background copy, started now and then and polled, as the copy page
// polls it, until it reports its end; then polls of the forgotten key.
class BackgroundCopy
{
public:
    explicit BackgroundCopy(const Scene& scene) : m_scene(scene) {}

    std::string start()
    {
        const std::string& f = m_scene.folder;
        m_running = true;
        return "system.nsp?Command=CopyThread&Key=soak&Source=" + f + "/source&Destination=" + f +
               "/copy" + std::to_string(m_copies++ % 2);
    }
    std::string poll() const { return "system.nsp?Command=CopyThreadProgress&Key=soak"; }
    // The answer to the last request of next().
    void answered(const std::string& page)
    {
        if (page.find("\"ReturnCode\":\"0\",\"TotalFiles\"") != std::string::npos ||
            page == "{\"ErrorCode\":1}")
            m_running = false;
    }
    bool running() const { return m_running; }

private:
    const Scene& m_scene;
    bool m_running = false;
    int m_copies = 0;
};
} // namespace

TEST(Soak, MixedRequestsLeaveMemoryDescriptorsThreadsAndPoolAsAfterWarmUp)
{
    Sim::Machine machine;
    describe(machine);
    const int total = requestCount();
    onSimulatedServer(
        machine,
        [total](Sim::Machine&)
        {
            Scene scene;
            BackgroundCopy copy(scene);
            int made = 0;
            int failed = 0;
            int roundNumber = 0;
            Figures warm;
            int warmMade = 0;
            std::chrono::steady_clock::time_point warmAt;
            auto request = [&](const std::string& url)
            {
                TestSupport::Answer answer = get(scene.url + url);
                failed += answer.result != 0;
                ++made;
                return answer.page;
            };
            auto finishCopy = [&]
            {
                while (copy.running())
                    copy.answered(request(copy.poll()));
            };
            while (made < total)
            {
                if (roundNumber % kRoundsPerCopy == 0)
                    copy.answered(request(copy.start()));
                for (const std::string& url : round(scene, roundNumber))
                    request(url);
                copy.answered(request(copy.poll()));
                // No copy is in flight when the figures are taken.
                if (roundNumber++ % kRoundsPerCopy == kRoundsPerCopy - 1 || made >= total)
                    finishCopy();
                if (warmAt == std::chrono::steady_clock::time_point() && made >= kWarmUpRequests &&
                    !copy.running())
                {
                    warm = measure();
                    warmAt = std::chrono::steady_clock::now();
                    warmMade = made;
                }
            }
            const Figures end = measure();
            const double seconds =
                std::chrono::duration<double>(std::chrono::steady_clock::now() - warmAt).count();
            std::printf("soak %d requests (%d after warm-up) at %.0f requests per second\n", made,
                        made - warmMade, (made - warmMade) / seconds);
            print("warm-up", warm);
            print("end", end);

            EXPECT_EQ(0, failed);
#ifndef __SANITIZE_ADDRESS__
            // Under AddressSanitizer freed memory waits in its quarantine, so
            // resident memory grows whatever the module does; the optimized
            // build checks it.
            EXPECT_LE(end.residentKiB, warm.residentKiB + kResidentSlackKiB);
#endif
            EXPECT_EQ(warm.descriptors, end.descriptors);
            EXPECT_EQ(warm.threads, end.threads);
            EXPECT_EQ(warm.poolFree, end.poolFree);
        },
        60 + total / 100);
}
