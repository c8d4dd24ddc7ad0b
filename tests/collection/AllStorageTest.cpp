#include "collection/AllStorage.h"

#include "ExpectedFiles.h"
#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace
{
std::vector<std::string> blockList(const fs::path& directory)
{
    Common::list<Common::string> found;
    Collection::AllStorage::BlockList((directory.string() + "/").c_str(), found);
    std::vector<std::string> names;
    const std::string prefix = directory.string() + "/";
    for (Common::list<Common::string>::const_iterator it = found.begin(); it != found.end(); ++it)
        names.push_back(std::string(it->c_str()).substr(prefix.size()));
    return names;
}

struct ScratchFolder
{
    ScratchFolder()
        : path(fs::temp_directory_path() / ("tidewell-blocks-" + std::to_string(getpid())))
    {
        fs::remove_all(path);
        fs::create_directories(path);
    }
    ~ScratchFolder() { fs::remove_all(path); }
    fs::path path;
};
} // namespace

TEST(AllStorage, BlockListTakesBothLayoutsSortedAndFollowsNoLinks)
{
    ScratchFolder scratch;
    const fs::path device = scratch.path / "0000:03:00.0";
    const fs::path disks = scratch.path / "block";
    fs::create_directories(disks / "sdz");
    fs::create_directories(device / "host1/target1:0:0/1:0:0:0/block/sdc/sdc1");
    fs::create_directories(device / "host1/target1:0:0/1:0:0:0/block/sdb");
    fs::create_directories(device / "host0/target0:0:0/0:0:0:0");
    fs::create_directory_symlink(disks / "sdz", device / "host0/target0:0:0/0:0:0:0/block:sdz");
    fs::create_directory_symlink(disks / "sdz",
                                 device / "host0/target0:0:0/0:0:0:0/block:strata!c0d0");
    fs::create_directories(device / "block:sda"); // a folder of that name counts as well
    // Links elsewhere are never followed: neither back up nor to other disks.
    fs::create_directory_symlink(scratch.path, device / "subsystem");
    fs::create_directory_symlink(device / "host1", device / "host1-alias");

    const std::vector<std::string> expected = {
        "block:sda",
        "host0/target0:0:0/0:0:0:0/block:sdz",
        "host0/target0:0:0/0:0:0:0/block:strata!c0d0",
        "host1/target1:0:0/1:0:0:0/block/sdb",
        "host1/target1:0:0/1:0:0:0/block/sdc",
    };
    EXPECT_EQ(expected, blockList(device));
    EXPECT_TRUE(blockList(scratch.path / "missing").empty());
}

TEST(AllStorage, WithoutNamesDatabaseEveryNameIsEmptyAndSaveReportsFailure)
{
    Sim::Machine machine;
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x2922, 0x01, 0x06);
    machine.addFunction({5, 0, 0}, 0x1000, 0x0072, 0x01, 0x07).subsystem(0x1028, 0x1F1C);
    auto check = [](Sim::Machine&)
    {
        const Collection::AllStorage storage((Common::shared_ptr<Collection::AllBoards>()));
        const std::string text = storage.toXMLString().c_str();
        EXPECT_EQ(
            "<AllStorage PCIDeviceCount=\"2\">"
            "<PCIDevice BlockDeviceCount=\"0\" BootOrder=\"0\" Bus=\"05\" ClassCode=\"01\" "
            "Device=\"00\" DeviceID=\"0072\" Function=\"00\" Index=\"0\" Name=\"\" Slot=\"255\" "
            "SubClassCode=\"07\" SubsystemID=\"10281F1C\" VendorID=\"1000\"/>"
            "<PCIDevice BlockDeviceCount=\"0\" BootOrder=\"1\" Bus=\"00\" ClassCode=\"01\" "
            "Device=\"1F\" DeviceID=\"2922\" Function=\"02\" Index=\"1\" Name=\"\" Slot=\"255\" "
            "SubClassCode=\"06\" SubsystemID=\"00000000\" VendorID=\"8086\"/>"
            "</AllStorage>",
            text);
        EXPECT_EQ("AllStorage", std::string(storage.toXML()->tag().c_str()));

        ScratchFolder scratch;
        const std::string file = (scratch.path / "allstorage.xml").string();
        EXPECT_TRUE(storage.Save(file.c_str()));
        EXPECT_EQ(text, readFile(file));
        EXPECT_FALSE(storage.Save((scratch.path / "missing/allstorage.xml").string().c_str()));
    };
    onSimulatedServer(machine, check);
}
