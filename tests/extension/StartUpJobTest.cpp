#include "TestSupport.h"
#include "pages/PageRunner.h"

#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

using TestSupport::contentFolder;
using TestSupport::readFile;

namespace
{
// The file once it holds `expected`, else what it held after 15 seconds.
std::string awaitFile(const std::string& path, const std::string& expected)
{
    std::string text;
    for (int tries = 0; tries < 1500; ++tries)
    {
        text = readFile(path);
        if (text == expected)
            break;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return text;
}
} // namespace

TEST(StartUpJob, FirstRequestSavesTheInventoryThatTheStoragePageWrites)
{
    Sim::Machine machine;
    machine.addFunction({3, 0, 0}, 0x103C, 0x323A, 0x01, 0x04).subsystem(0x0E11, 0x3245);
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x3A22, 0x01, 0x06);
    machine.addDisk({{3, 0, 0}, "strata!c0d0", 146778685440});
    machine.addDisk({{0, 0x1F, 2}, "sda", 500107862016, false, true});
    auto check = [](Sim::Machine&)
    {
        const std::string boards = contentFolder() + "cfg/allboards.xml";
        const std::string saved = contentFolder() + "cfg/allstorage.xml";
        TestSupport::putContent("cfg/allboards.xml",
                                "<AllBoards><PCI><dev id=\"103C323A0E113245\">"
                                "<name>Stratum Array R4e</name></dev></PCI></AllBoards>");
        EXPECT_FALSE(TestSupport::exists(saved));

        // The first request is answered; the job runs on beside it.
        EXPECT_EQ(0, TestSupport::get("zrmedia://Tidewell/").result);

        TestSupport::TempDir dir;
        EXPECT_EQ(
            "{\"ErrorCode\":0}",
            TestSupport::runPage("allstorage.nsp", "Command=Create&AllBoardsXML=" + boards +
                                                       "&AllStorageXML=" + dir.file("page.xml")));
        const std::string written = readFile(dir.file("page.xml"));
        EXPECT_NE(std::string::npos, written.find("Name=\"Stratum Array R4e\""));
        EXPECT_NE(std::string::npos, written.find("DeviceNode=\"/dev/sda\""));
        EXPECT_EQ(written, awaitFile(saved, written));
    };
    onSimulatedServer(machine, check);
}
