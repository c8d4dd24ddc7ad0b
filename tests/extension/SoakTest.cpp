#include "TestSupport.h"
#include "pages/CorvaneServer.h"

#include "common/GlobalStaticAllocator.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// Mixed requests through the entry point on one simulated server, as a UI
// polling for hours makes them: growth of resident memory, descriptors,
// threads or the memory pool after a warm-up is a leak. The length is
// TIDEWELL_SOAK_REQUESTS (100000 for the long form).

using TestSupport::contentFolder;

namespace
{
const int kWarmUpRequests = 1000;
// Copies (a thread each, which an emulator keeps a few KiB of) start as
// rarely as a user starts them.
const int kRoundsPerCopy = 50;

long statusValue(const std::string& key)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.compare(0, key.size() + 1, key + ":") == 0)
            return std::atol(line.c_str() + key.size() + 1);
    return -1;
}

// Threads, descriptors, free pool bytes and resident KiB, once they are
// steady: a joined thread can still be leaving the process for a moment.
std::vector<long> measure()
{
    std::vector<long> now, last;
    for (int tries = 0; tries < 100 && (tries < 2 || now[0] != last[0] || now[1] != last[1]);
         ++tries)
    {
        ::usleep(20000);
        last = now;
        now = {statusValue("Threads"),
               std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator()),
               0, statusValue("VmRSS")};
        for (int segment = 0; segment < 10; ++segment)
            now[2] += Common::GlobalStaticAllocator::getFreeSpace(segment);
    }
    std::printf("soak %ld threads, %ld descriptors, pool free %ld bytes, RSS %ld KiB\n", now[0],
                now[1], now[2], now[3]);
    return now;
}

// One round's requests in the folder `f`; the rarer ones every few rounds.
std::vector<std::string> round(const std::string& f, int number)
{
    const std::string n = std::to_string(number);
    std::vector<std::string> urls = {
        "index.nsp",
        "hardware.nsp?Command=Query",
        "system.nsp?Command=Query",
        "system.nsp?Command=FileExists&Target=" + f + "/style.css",
        "system.nsp?Command=DirectoryExists&Target=" + f,
        "system.nsp?Command=CreateDirectory&DirectoryName=" + f + "/made",
        "system.nsp?Command=CreateFile&Filename=" + f + "/made/note.txt&Contents=round+" + n,
        "system.nsp?Command=ReadFile&Filename=" + f + "/made/note.txt",
        "setbootorder.nsp?Command=Query",
        "setbootorder.nsp?Command=Perform&Order=" + std::string(number % 2 ? "cdrom" : "hd") +
            "&Order=pxe",
        "reboot.nsp?Command=Query",
        "fsetreset.nsp?Command=Query",
        "ostree.nsp?OSIDList=5b0010,5b0005&Selected=5b0010",
        "unattended.nsp?Platform=W2K8_X64&FullName=Ops&ComputerName=node" +
            std::to_string(number % 7) + "&Filename=" + f + "/answers.xml",
        "unattended.nsp?Platform=W2K3&FullName=Ops&Filename=" + f + "/answers.txt",
        "soak/style.css",
        "soak/page.htm",
        "system.nsp?Command=Copy&Source=" + f + "/source/a.txt&Destination=" + f + "/made/a.txt",
    };
    if (number % 10 == 3)
        urls.push_back("debug.nsp?Command=Log&Message=round+" + n);
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
} // namespace

TEST(Soak, MixedRequestsLeaveMemoryDescriptorsThreadsAndPoolAsAfterWarmUp)
{
    Sim::Machine machine;
    machine.installSmbios(corvaneTables());
    addCorvaneRom(machine);
    machine.installIplTable({{2, {0, 31, 2}, "SATA disk"},
                             {3, {0, 31, 2}, "CD drive"},
                             {128, {2, 0, 0}, "Network boot"}});
    addStorage(machine);
    machine.addFunction({2, 0, 0}, 0x14E4, 0x1639, 0x02, 0x00);
    const char* asked = std::getenv("TIDEWELL_SOAK_REQUESTS");
    const int total = asked && std::atoi(asked) > kWarmUpRequests ? std::atoi(asked) : 10000;
    onSimulatedServer(
        machine,
        [total](Sim::Machine&)
        {
            const std::string f = contentFolder() + "soak";
            TestSupport::putContent("cfg/allboards.xml", kAllBoards);
            TestSupport::putContent("soak/style.css", "body { margin: 0 }\n");
            TestSupport::putContent("soak/part.htm", "<p>part</p>");
            TestSupport::putContent("soak/page.htm", "<html><?include \"part.htm\"?></html>");
            TestSupport::putContent("soak/source/a.txt", std::string(3000, 'a'));
            TestSupport::putContent("soak/source/sub/b.txt", std::string(5000, 'b'));
            int made = 0, failed = 0;
            std::vector<long> warm;
            bool copying = false; // polled, as the copy page polls, to its end
            auto request = [&](const std::string& url)
            {
                TestSupport::Answer answer = TestSupport::get("zrmedia://Tidewell/" + url);
                failed += answer.result != 0;
                ++made;
                return answer.page;
            };
            auto poll = [&]
            {
                const std::string page = request("system.nsp?Command=CopyThreadProgress&Key=soak");
                if (page.find("\"ReturnCode\":\"0\",\"TotalFiles\"") != std::string::npos ||
                    page == "{\"ErrorCode\":1}")
                    copying = false;
            };
            for (int number = 0; made < total; ++number)
            {
                if (number % kRoundsPerCopy == 0)
                {
                    request("system.nsp?Command=CopyThread&Key=soak&Source=" + f +
                            "/source&Destination=" + f + "/copy" + std::to_string(number % 2));
                    copying = true;
                }
                for (const std::string& url : round(f, number))
                    request(url);
                poll();
                // No copy is in flight when the figures are taken.
                while (copying && (number % kRoundsPerCopy == kRoundsPerCopy - 1 || made >= total))
                    poll();
                if (warm.empty() && made >= kWarmUpRequests && !copying)
                    warm = measure();
            }
            const std::vector<long> end = measure();
            EXPECT_EQ(0, failed);
            EXPECT_EQ(std::vector<long>(warm.begin(), warm.end() - 1),
                      std::vector<long>(end.begin(), end.end() - 1));
#ifndef __SANITIZE_ADDRESS__
            // AddressSanitizer's quarantine grows resident memory regardless.
            EXPECT_LE(end[3], warm[3] + 1024);
#endif
        },
        60 + total / 100);
}
