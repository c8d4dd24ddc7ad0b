#include "TestSupport.h"
#include "pages/CorvaneServer.h"

#include "extension/BackgroundThread.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>

using TestSupport::contentFolder;
using TestSupport::runPage;

// The start-up job and the first requests of a process ask the same cached
// "supported" answers, and drive the same PCI configuration ports and IPMI
// device, at the same moment. The answers are kept for the life of a
// process, so every round runs in a fresh one.

namespace
{
const int kRounds = 24;
const Sim::PciLocation kNvram = {0, 5, 0};

std::size_t deviceIdRequests(Sim::Machine& machine)
{
    const auto& requests = machine.managementController()->requests();
    return std::count_if(requests.begin(), requests.end(),
                         [](const Sim::IpmiRequest& request)
                         { return request.netfn == 0x06 && request.cmd == 0x01; });
}
} // namespace

TEST(StartUpRace, JobAndRequestsAskTheHardwareTogetherInEveryFreshProcess)
{
    TestSupport::putContent("cfg/allboards.xml", kAllBoards);
    for (int round = 0; round < kRounds; ++round)
    {
        Sim::Machine machine;
        machine.installSmbios(corvaneTables());
        machine.addManagementController();
        machine.addNvramController(kNvram);
        addStorage(machine);
        onSimulatedServer(
            machine,
            [round](Sim::Machine& machine)
            {
                std::atomic<int> waiting{2};
                std::atomic<bool> jobDone{false};
                auto together = [&]
                {
                    waiting.fetch_sub(1);
                    while (waiting.load() != 0)
                        std::this_thread::yield();
                };
                std::thread job(
                    [&]
                    {
                        BackgroundThread startUp(Common::string(contentFolder().c_str()));
                        together();
                        startUp.Run();
                        jobDone = true;
                    });
                together();
                // Requests for as long as the job runs, so that they meet each
                // of its steps.
                std::string hardware, order, restart;
                do
                {
                    hardware = runPage("hardware.nsp", "Command=Query");
                    order = runPage("setbootorder.nsp", "Command=Query");
                    restart = runPage("reboot.nsp", "Command=Perform&Target=Default&ColdBoot=Yes");
                    if (hardware.find("\"WD100Support\":\"Yes\"") == std::string::npos ||
                        order.find("{\"ErrorCode\":0,") != 0 ||
                        restart != "{\"ErrorCode\":0,\"Target\":\"Default\",\"ColdBoot\":\"Yes\"}")
                        break;
                } while (!jobDone);
                job.join();

                SCOPED_TRACE("round " + std::to_string(round));
                EXPECT_NE(std::string::npos, hardware.find("\"WD100Support\":\"Yes\"")) << hardware;
                EXPECT_EQ(0u, order.find("{\"ErrorCode\":0,")) << order;
                EXPECT_EQ("{\"ErrorCode\":0,\"Target\":\"Default\",\"ColdBoot\":\"Yes\"}", restart);
                // One probe of the management processor serves every asker.
                EXPECT_EQ(1u, deviceIdRequests(machine));
                const std::string saved =
                    TestSupport::readFile(contentFolder() + "cfg/allstorage.xml");
                EXPECT_NE(std::string::npos, saved.find("Name=\"Stratum Array R4e\""));
                EXPECT_NE(std::string::npos, saved.find("DeviceNode=\"/dev/sda\""));
                EXPECT_FALSE(dynamic_cast<Sim::NvramController&>(*machine.bridge().find(kNvram))
                                 .semaphoreHeld());
            });
    }
}
