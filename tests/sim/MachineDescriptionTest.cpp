#include "sim/MachineDescription.h"

#include "common/system/EnvironmentVariable.h"
#include "common/system/IPMI.h"
#include "common/system/NVRAM.h"
#include "common/system/PCI.h"
#include "common/system/SMBios.h"
#include "tests/support/SimulatedServer.h"
#include "tests/support/Text.h"

#include <array>
#include <string>

using Common::System::PCI;

TEST(MachineDescription, SampleServerLoadsAndAnswersTheModule)
{
    Sim::Machine machine;
    std::string error;
    ASSERT_TRUE(
        Sim::MachineDescription::Load(SIM_MACHINES_DIR "/corvane-quillon.xml", machine, error))
        << error;
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          EXPECT_EQ("16384", text(Common::System::SMBios().GetTotalRAM()));
                          EXPECT_TRUE(Common::System::NVRAM::Supported());
                          PCI::_PCI_ADDRESS fibreChannel = {4, 0, 0, 0};
                          unsigned char slot = 0;
                          PCI::Slot(fibreChannel, slot);
                          EXPECT_EQ(2, slot);
                          unsigned char order[32] = {};
                          unsigned size = sizeof order;
                          ASSERT_TRUE(Common::EnvironmentVariable::read("RXHIPL", order, size));
                          EXPECT_EQ(std::string("\x00\x01\x02", 3),
                                    std::string(reinterpret_cast<char*>(order), size));
                          EXPECT_TRUE(Common::IPMI::supported());
                      });
}

TEST(MachineDescription, ManagementControllerFaultsAndMistakes)
{
    Sim::Machine machine;
    std::string error;
    ASSERT_TRUE(
        Sim::MachineDescription::Load(SIM_MACHINES_DIR "/brightline-cedar.xml", machine, error))
        << error;
    Sim::ManagementController& controller = *machine.managementController();
    EXPECT_EQ("nightdesk", controller.users().user(3).name);
    EXPECT_EQ(3, controller.users().user(3).privilege);
    EXPECT_FALSE(controller.users().user(4).enabled);
    EXPECT_EQ((std::array<std::uint8_t, 4>{10, 20, 0, 57}), controller.lan().address);
    EXPECT_EQ(120, controller.lan().vlan);
    EXPECT_EQ(9, controller.sol().nonVolatileBitRate);

    Sim::Machine faulty;
    ASSERT_TRUE(Sim::MachineDescription::Parse(
        "<Machine><Faults noIOPrivilege=\"yes\" noProcBusPci=\"yes\"/></Machine>", faulty, error));
    EXPECT_TRUE(faulty.faults().noIOPrivilege && faulty.faults().noProcBusPci);
    EXPECT_FALSE(faulty.faults().noPhysicalMemory);

    const struct
    {
        const char* text;
        const char* error;
    } mistakes[] = {
        {"<Machine><Toaster/></Machine>", "unknown element <Toaster>"},
        {"<Machine><Function bus=\"0x100\"/></Machine>",
         "<Function> bus=\"0x100\" is not a number up to 255"},
        {"<Machine><Rom><Variable name=\"RXHIPL\" bytes=\"0x01 0x100\"/></Rom></Machine>",
         "<Variable> bytes=\"0x01 0x100\" holds \"0x100\", not a byte"},
        {"<Machine><Disk bus=\"3\" name=\"sda\"/><Disk bus=\"4\" name=\"sda\"/></Machine>",
         "a second disk named \"sda\""},
        {"<Machine><ManagementController><Lan address=\"10.0.0\"/></ManagementController></Machine>",
         "<Lan> address=\"10.0.0\" is not an address"},
        {"<Machine><ManagementController><User id=\"3\" privilege=\"root\"/>"
         "</ManagementController></Machine>",
         "<User> privilege=\"root\" is not a privilege"},
    };
    for (auto const& mistake : mistakes)
    {
        Sim::Machine bad;
        EXPECT_FALSE(Sim::MachineDescription::Parse(mistake.text, bad, error));
        EXPECT_EQ(mistake.error, error);
    }
    EXPECT_FALSE(Sim::MachineDescription::Load("/nonexistent/machine.xml", machine, error));
    EXPECT_EQ("cannot read /nonexistent/machine.xml", error);
}
