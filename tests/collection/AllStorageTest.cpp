#include "collection/AllStorage.h"

#include "ExpectedFiles.h"
#include "tests/support/SimulatedServer.h"
#include "tests/support/TempDir.h"

#include <string>
#include <vector>

namespace
{
const char kController[] = "/sys/bus/pci/devices/0000:05:00.0/";

std::vector<std::string> blockList(std::string const& folder)
{
    Common::list<Common::string> found;
    Collection::AllStorage::BlockList(folder.c_str(), found);
    std::vector<std::string> names;
    for (Common::list<Common::string>::const_iterator it = found.begin(); it != found.end(); ++it)
        names.push_back(std::string(it->c_str()).substr(folder.size()));
    return names;
}
} // namespace

TEST(AllStorage, ControllersInBootOrderWithTheirFixedDisksOfBothLayouts)
{
    Sim::Machine machine;
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x2922, 0x01, 0x06);
    machine.addFunction({5, 0, 0}, 0x1000, 0x0072, 0x01, 0x07).subsystem(0x1028, 0x1F1C);
    machine.addDisk({{5, 0, 0}, "sdz", 512 * 1000ull});
    machine.addDisk({{5, 0, 0}, "strata!c0d0", 512 * 2000ull});
    machine.addDisk({{5, 0, 0}, "sdc", 512 * 3000ull, false, true});
    machine.addDisk({{5, 0, 0}, "sdb", 0, false, true});     // no size: left out
    machine.addDisk({{5, 0, 0}, "sdd", 512, true, true});    // removable: left out
    onSimulatedServer(
        machine,
        [](Sim::Machine&)
        {
            // Sorted; the link back up ("subsystem") is not followed.
            const std::string scsi = "host0/target0:0:0/0:0:0:0/";
            EXPECT_EQ((std::vector<std::string>{scsi + "block/sdb", scsi + "block/sdc",
                                                scsi + "block/sdd", scsi + "block:sdz",
                                                scsi + "block:strata!c0d0"}),
                      blockList(kController));
            EXPECT_TRUE(blockList("/sys/bus/pci/devices/0000:06:00.0/").empty());

            const Collection::AllStorage storage((Common::shared_ptr<Collection::AllBoards>()));
            const std::string text = storage.toXMLString().c_str();
            EXPECT_EQ(
                "<AllStorage PCIDeviceCount=\"2\">"
                "<PCIDevice BlockDeviceCount=\"3\" BootOrder=\"0\" Bus=\"05\" ClassCode=\"01\" "
                "Device=\"00\" DeviceID=\"0072\" Function=\"00\" Index=\"0\" Name=\"\" Slot=\"255\" "
                "SubClassCode=\"07\" SubsystemID=\"10281F1C\" VendorID=\"1000\">"
                "<BlockDevice DeviceNode=\"/dev/sdc\" DriveNumber=\"1\" Index=\"0\" Removable=\"0\" "
                "Size=\"1536000\"/>"
                "<BlockDevice DeviceNode=\"/dev/sdz\" DriveNumber=\"2\" Index=\"1\" Removable=\"0\" "
                "Size=\"512000\"/>"
                "<BlockDevice DeviceNode=\"/dev/strata/c0d0\" DriveNumber=\"3\" Index=\"2\" "
                "Removable=\"0\" Size=\"1024000\"/>"
                "</PCIDevice>"
                "<PCIDevice BlockDeviceCount=\"0\" BootOrder=\"1\" Bus=\"00\" ClassCode=\"01\" "
                "Device=\"1F\" DeviceID=\"2922\" Function=\"02\" Index=\"1\" Name=\"\" Slot=\"255\" "
                "SubClassCode=\"06\" SubsystemID=\"00000000\" VendorID=\"8086\"/>"
                "</AllStorage>",
                text);

            TestSupport::TempDir scratch;
            EXPECT_TRUE(storage.Save(scratch.file("allstorage.xml").c_str()));
            EXPECT_EQ(text, readFile(scratch.file("allstorage.xml")));
            EXPECT_FALSE(storage.Save(scratch.file("missing/allstorage.xml").c_str()));
        });
}
