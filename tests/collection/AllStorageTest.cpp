#include "collection/AllStorage.h"

#include "tests/support/SimulatedServer.h"
#include "tests/support/Files.h"
#include "tests/support/ScratchFolder.h"

// The document's rules are checked through allstorage.nsp; here, what the
// page cannot see: the answer of Save, and no names without a database.
TEST(AllStorage, SaveReportsWhetherTheDocumentWasWritten)
{
    Sim::Machine machine;
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x2922, 0x01, 0x06);
    onSimulatedServer(
        machine,
        [](Sim::Machine&)
        {
            const Collection::AllStorage storage((Common::shared_ptr<Collection::AllBoards>()));
            ScratchFolder scratch;
            EXPECT_TRUE(storage.Save(scratch.path("allstorage.xml").c_str()));
            EXPECT_EQ("<AllStorage PCIDeviceCount=\"1\">"
                      "<PCIDevice BlockDeviceCount=\"0\" BootOrder=\"0\" Bus=\"00\" ClassCode=\"01\" "
                      "Device=\"1F\" DeviceID=\"2922\" Function=\"02\" Index=\"0\" Name=\"\" "
                      "Slot=\"255\" SubClassCode=\"06\" SubsystemID=\"00000000\" VendorID=\"8086\"/>"
                      "</AllStorage>",
                      TestSupport::readFile(scratch.path("allstorage.xml")));
            EXPECT_FALSE(storage.Save(scratch.path("missing/allstorage.xml").c_str()));
        });
}
