#include "TestSupport.h"
#include "pages/CorvaneServer.h"

#include "extension/BackgroundThread.h"
#include "tests/support/IpmiLog.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

using TestSupport::contentFolder;
using TestSupport::runPage;

// The start-up job and the first requests of a process ask the same cached
// "supported" answers, and drive the same ports and IPMI device, at the same
// moment. The answers last a process's life, so every round runs in a fresh one.
TEST(StartUpRace, JobAndRequestsAskTheHardwareTogetherInEveryFreshProcess)
{
    const Sim::PciLocation nvram = {0, 5, 0};
    const std::string restarted = "{\"ErrorCode\":0,\"Target\":\"Default\",\"ColdBoot\":\"Yes\"}";
    TestSupport::putContent("cfg/allboards.xml", kAllBoards);
    for (int round = 0; round < 24; ++round)
    {
        Sim::Machine machine;
        machine.installSmbios(corvaneTables());
        machine.addManagementController();
        machine.addNvramController(nvram);
        addStorage(machine);
        onSimulatedServer(
            machine,
            [&](Sim::Machine& machine)
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
                // Requests for as long as the job runs, to meet each of its steps.
                bool answered;
                do
                    answered =
                        runPage("hardware.nsp", "Command=Query").find("\"WD100Support\":\"Yes\"") !=
                            std::string::npos &&
                        runPage("setbootorder.nsp", "Command=Query").find("{\"ErrorCode\":0,") ==
                            0 &&
                        runPage("reboot.nsp", "Command=Perform&Target=Default&ColdBoot=Yes") ==
                            restarted;
                while (answered && !jobDone);
                job.join();
                SCOPED_TRACE("round " + std::to_string(round));
                EXPECT_TRUE(answered);
                // One probe of the management processor serves every asker.
                EXPECT_EQ("0601:", ipmiLog(machine, 0, "0601"));
                const std::string saved =
                    TestSupport::readFile(contentFolder() + "cfg/allstorage.xml");
                EXPECT_NE(std::string::npos, saved.find("Name=\"Stratum Array R4e\""));
                EXPECT_NE(std::string::npos, saved.find("DeviceNode=\"/dev/sda\""));
                EXPECT_FALSE(dynamic_cast<Sim::NvramController&>(*machine.bridge().find(nvram))
                                 .semaphoreHeld());
            });
    }
}
