#include "sim/MachineDescription.h"

#include "common/system/EnvironmentVariable.h"
#include "common/system/IPMI.h"
#include "common/system/NVRAM.h"
#include "common/system/PCI.h"
#include "common/system/RomSignature.h"
#include "common/system/SMBios.h"
#include "tests/support/SimulatedServer.h"

#include <array>
#include <string>

using Common::System::PCI;

namespace
{
std::string str(Common::string const& s)
{
    return std::string(s.c_str(), s.size());
}
} // namespace

TEST(MachineDescription, SampleServerLoadsAndAnswersTheModule)
{
    Sim::Machine machine;
    std::string error;
    ASSERT_TRUE(
        Sim::MachineDescription::Load(SIM_MACHINES_DIR "/corvane-quillon.xml", machine, error))
        << error;
    auto check = [](Sim::Machine&)
    {
        Common::System::SMBios smbios;
        EXPECT_EQ("Corvane Quillon 2U", str(smbios.GetProductName()));
        EXPECT_EQ("0725", str(smbios.GetServerID()));
        EXPECT_EQ("16384", str(smbios.GetTotalRAM()));
        EXPECT_TRUE(IsNVRAMSupported());
        EXPECT_TRUE(Common::System::NVRAM::Supported());

        PCI::_PCI_ADDRESS at;
        PCI::InitializeEnumerate(at);
        int functions = 0;
        while (PCI::EnumerateDevice(at))
            ++functions;
        EXPECT_EQ(10, functions);

        PCI::_PCI_ADDRESS fibreChannel = {4, 0, 0, 0};
        unsigned char slot = 0;
        PCI::Slot(fibreChannel, slot);
        EXPECT_EQ(2, slot);
        unsigned int subsystem = 0;
        EXPECT_TRUE(PCI::SubsystemID(fibreChannel, subsystem));
        EXPECT_EQ(0x0E113262u, subsystem);

        EXPECT_TRUE(IsVelmarServer());
        unsigned char order[32] = {};
        unsigned size = sizeof order;
        ASSERT_TRUE(Common::EnvironmentVariable::read("RXHIPL", order, size));
        EXPECT_EQ(std::string("\x00\x01\x02", 3),
                  std::string(reinterpret_cast<char*>(order), size));
        EXPECT_EQ(2u, Common::EnvironmentVariable::names().size());
        EXPECT_TRUE(Common::IPMI::supported());
    };
    onSimulatedServer(machine, check);
}

TEST(MachineDescription, FaultsAndMistakesAreReported)
{
    Sim::Machine faulty;
    std::string error;
    ASSERT_TRUE(Sim::MachineDescription::Parse(
        "<Machine><Faults noIOPrivilege=\"yes\" noProcBusPci=\"yes\"/></Machine>", faulty, error))
        << error;
    EXPECT_TRUE(faulty.faults().noIOPrivilege);
    EXPECT_TRUE(faulty.faults().noProcBusPci);
    EXPECT_FALSE(faulty.faults().noPhysicalMemory);

    Sim::Machine machine;
    EXPECT_FALSE(Sim::MachineDescription::Parse("<Machine><Toaster/></Machine>", machine, error));
    EXPECT_EQ("unknown element <Toaster>", error);
    EXPECT_FALSE(Sim::MachineDescription::Parse("<Machine><Function bus=\"0x100\"/></Machine>",
                                                machine, error));
    EXPECT_EQ("<Function> bus=\"0x100\" is not a number up to 255", error);
    EXPECT_FALSE(Sim::MachineDescription::Parse("<Machine><Bridge device=\"12ab\"/></Machine>",
                                                machine, error));
    EXPECT_FALSE(Sim::MachineDescription::Parse(
        "<Machine><Rom><Variable name=\"RXHIPL\" bytes=\"0x01 0x100\"/></Rom></Machine>", machine,
        error));
    EXPECT_EQ("<Variable> bytes=\"0x01 0x100\" holds \"0x100\", not a byte", error);
    EXPECT_FALSE(Sim::MachineDescription::Parse(
        "<Machine><Disk bus=\"3\" name=\"sda\"/><Disk bus=\"4\" name=\"sda\"/></Machine>", machine,
        error));
    EXPECT_EQ("a second disk named \"sda\"", error);
    EXPECT_FALSE(Sim::MachineDescription::Parse("<Server/>", machine, error));
    EXPECT_FALSE(Sim::MachineDescription::Load("/nonexistent/machine.xml", machine, error));
    EXPECT_EQ("cannot read /nonexistent/machine.xml", error);
}

TEST(MachineDescription, ManagementControllerWithUsersLANAndSOL)
{
    Sim::Machine machine;
    std::string error;
    ASSERT_TRUE(
        Sim::MachineDescription::Load(SIM_MACHINES_DIR "/brightline-cedar.xml", machine, error))
        << error;
    Sim::ManagementController& controller = *machine.managementController();
    EXPECT_EQ(8u, controller.users().size());
    EXPECT_EQ(0, controller.powerRestorePolicy);
    Sim::ManagementUser& operatorUser = controller.users().user(3);
    EXPECT_EQ("nightdesk", operatorUser.name);
    EXPECT_TRUE(operatorUser.enabled);
    EXPECT_EQ(3, operatorUser.privilege);
    EXPECT_FALSE(controller.users().user(4).enabled);
    EXPECT_EQ(2, controller.lan().ipSource);
    EXPECT_EQ((std::array<std::uint8_t, 4>{10, 20, 0, 57}), controller.lan().address);
    EXPECT_EQ((std::array<std::uint8_t, 6>{0x02, 0x42, 0xB1, 0x0C, 0x3E, 0x57}),
              controller.lan().mac);
    EXPECT_EQ(120, controller.lan().vlan);
    EXPECT_EQ(9, controller.sol().nonVolatileBitRate);

    Sim::Machine bad;
    EXPECT_FALSE(Sim::MachineDescription::Parse(
        "<Machine><ManagementController><Lan address=\"10.0.0\"/></ManagementController>"
        "</Machine>",
        bad, error));
    EXPECT_EQ("<Lan> address=\"10.0.0\" is not an address", error);
    Sim::Machine badPrivilege;
    EXPECT_FALSE(Sim::MachineDescription::Parse(
        "<Machine><ManagementController><User id=\"3\" privilege=\"root\"/>"
        "</ManagementController></Machine>",
        badPrivilege, error));
    EXPECT_EQ("<User> privilege=\"root\" is not a privilege", error);
}
