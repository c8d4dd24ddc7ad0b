#include "tests/support/IpmiLog.h"
#include "tests/support/PageRun.h"
#include "tests/support/SimulatedServer.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

using testing::_;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace
{
const char kQueryOfTwoUsers[] =
    "{\"ErrorCode\":0,"
    "\"Identity\":{\"DeviceID\":32,\"DeviceRevision\":1,\"FirmwareRevision\":\"2.16\","
    "\"IPMIVersion\":\"2.0\",\"ManufacturerID\":48879,\"ProductID\":4096},"
    "\"Network\":{\"Channel\":1,\"IPSource\":\"Static\",\"IPAddress\":\"192.168.40.12\","
    "\"SubnetMask\":\"255.255.255.0\",\"Gateway\":\"192.168.40.1\","
    "\"MACAddress\":\"02:1a:7e:00:00:01\",\"VLANID\":0},"
    "\"Users\":[{\"ID\":1,\"Name\":\"\",\"Enabled\":\"No\",\"Privilege\":\"NoAccess\"},"
    "{\"ID\":2,\"Name\":\"admin\",\"Enabled\":\"Yes\",\"Privilege\":\"Administrator\"}],"
    "\"Services\":{\"LANEnabled\":\"Yes\",\"SOLEnabled\":\"Yes\",\"BaudRate\":115200},"
    "\"PowerPolicy\":\"Previous\","
    "\"Unsupported\":[]}";
const char kDone[] = "{\"ErrorCode\":0}";
const char kSetters[] = "0C01 0C21 0640 0643 0645 0647 0006 0008"; // requests that change

std::string badValue(const std::string& parameter)
{
    return "{\"ErrorCode\":2,\"Parameter\":\"" + parameter + "\"}";
}

std::string refused(const std::string& request, const std::string& code)
{
    return "{\"ErrorCode\":1,\"Request\":\"" + request + "\",\"CompletionCode\":\"" + code + "\"}";
}

// A command, the page's answer, and the changes it sends (ipmiLog of the setters).
struct Step
{
    std::string command;
    testing::Matcher<std::string> answer;
    testing::Matcher<std::string> changes;
};

// Runs `steps` on a controller with `users` user IDs (2 the administrator).
void onController(std::vector<Step> const& steps,
                  std::function<void(Sim::ManagementController&)> setup = {}, std::size_t users = 2,
                  std::function<void(Sim::Machine&)> after = {})
{
    Sim::Machine machine;
    machine.addManagementController().users().resize(users);
    if (setup)
        setup(*machine.managementController());
    onSimulatedServer(
        machine,
        [&](Sim::Machine& machine)
        {
            for (Step const& step : steps)
            {
                const std::size_t from = machine.managementController()->requests().size();
                EXPECT_THAT(TestSupport::runPage("wd100.nsp", "Command=" + step.command),
                            step.answer)
                    << step.command;
                EXPECT_THAT(ipmiLog(machine, from, kSetters), step.changes) << step.command;
            }
            if (after)
                after(machine);
        });
}
} // namespace

// The LAN channel is found by its medium, channel 0 first, and never through
// "this channel" (0Eh); names are escaped for JSON.
TEST(Wd100Page, QueryAnswersEverySectionFromTheLANChannel)
{
    onController(
        {{"Query",
          AllOf(HasSubstr("{\"ID\":3,\"Name\":\"q\\\"x\\\\y\\u0001\\u00E9\","
                          "\"Enabled\":\"No\",\"Privilege\":\"User\"}]"),
                HasSubstr("\"Network\":{\"Channel\":6,\"IPSource\":\"DHCP\","),
                HasSubstr("\"VLANID\":300}"),
                HasSubstr("\"Services\":{\"LANEnabled\":\"Yes\",\"SOLEnabled\":\"No\","
                          "\"BaudRate\":0},\"PowerPolicy\":\"AlwaysOn\",")),
          ""}},
        [](Sim::ManagementController& c)
        {
            c.users().user(3).name = "q\"x\\y\x01\xE9";
            c.users().user(3).privilege = 2;
            c.lan().channel = 6;
            c.lan().ipSource = 2;
            c.lan().vlan = 300;
            c.sol().enabled = false;
            c.sol().nonVolatileBitRate = 0;
            c.powerRestorePolicy = 2;
        },
        3);
    // What the controller does not support is listed.
    onController(
        {{"Query",
          AllOf(StartsWith("{\"ErrorCode\":0,\"Network\":{"), HasSubstr("\"Users\":[{\"ID\":1,"),
                HasSubstr(",\"Unsupported\":[\"Identity\",\"Services\",\"PowerPolicy\"]}")),
          ""}},
        [](Sim::ManagementController& c)
        {
            c.refuse(0x0C, 0x22, {}, 0xC1);       // no serial over LAN
            c.refuse(0x00, 0x01, {}, 0xC1);       // no chassis status
            c.answerNextWith({0x00});             // the presence test
            c.answerNextWith({0x00, 0x20, 0x01}); // a short Get Device ID
        });
    // Without a LAN channel among channels 0..11 its sections are missing.
    onController(
        {{"Query",
          AllOf(StartsWith("{\"ErrorCode\":0,\"Identity\":{"),
                HasSubstr("\"PowerPolicy\":\"Previous\",\"Unsupported\":[\"Network\","
                          "\"Users\",\"Services\"]}")),
          ""},
         {"SetNetwork&IPAddress=10.0.0.5", "{\"ErrorCode\":1}", ""}},
        [](Sim::ManagementController& c) { c.lan().channel = 13; }, 2,
        [](Sim::Machine& machine)
        {
            EXPECT_THAT(ipmiLog(machine, 0, "0642"),
                        StartsWith("0642:00 0642:01 0642:02 0642:03 0642:04 0642:05 "
                                   "0642:06 0642:07 0642:08 0642:09 0642:0A 0642:0B"));
            EXPECT_THAT(ipmiLog(machine, 0, "0642"), Not(HasSubstr("0642:0C")));
        });
}

// Set in progress, the parameters, commit, set complete (also after a
// refused write); a set begun by another is left alone. Each command looks
// for the LAN channel again.
TEST(Wd100Page, SetNetworkWritesInsideOneSetInProgressSequence)
{
    onController(
        {{"QUERY", kQueryOfTwoUsers, ""},
         {"SetNetwork&IPSource=static&IPAddress=10.0.0.5&SubnetMask=255.255.254.0"
          "&Gateway=10.0.0.1&VLANID=300",
          kDone,
          "0C01:010001 0C01:010401 0C01:01030A000005 0C01:0106FFFFFE00 0C01:010C0A000001 "
          "0C01:01142C81 0C01:010002 0C01:010000"},
         {"Query",
          AllOf(HasSubstr("\"IPSource\":\"Static\",\"IPAddress\":\"10.0.0.5\",\"SubnetMask\":"
                          "\"255.255.254.0\",\"Gateway\":\"10.0.0.1\","),
                HasSubstr("\"VLANID\":300}")),
          ""},
         // Only what is given is sent; VLAN 0 switches the VLAN off.
         {"SetNetwork&IPSource=DHCP&VLANID=0", kDone,
          "0C01:010001 0C01:010402 0C01:01140000 0C01:010002 0C01:010000"},
         {"SetNetwork", kDone, ""}},
        {}, 2,
        [](Sim::Machine& machine)
        {
            EXPECT_THAT(ipmiLog(machine, 0, "0642"), StartsWith("0642:00 0642:01 0642:00 0642:01"));
            EXPECT_THAT(ipmiLog(machine, 0, "0642"), Not(HasSubstr("0642:0E")));
            EXPECT_THAT(ipmiLog(machine, 0, "0C22"), HasSubstr("0C22:01050000"))
                << "the non-volatile SOL bit rate";
        });
    onController(
        {{"SetNetwork&IPAddress=10.0.0.5&SubnetMask=255.0.0.0&Gateway=10.0.0.1",
          refused("SubnetMask", "CC"), "0C01:010001 0C01:01030A000005 0C01:0106FF00*3 0C01:010000"},
         {"SetNetwork&Gateway=10.0.0.1", refused("Commit", "D5"),
          "0C01:010001 0C01:010C0A000001 0C01:010002 0C01:010000"}},
        [](Sim::ManagementController& c)
        {
            c.refuse(0x0C, 0x01, {1, 6}, 0xCC);
            c.refuse(0x0C, 0x01, {1, 0, 2}, 0xD5);
        });
    onController(
        {{"SetNetwork&IPAddress=10.0.0.5", refused("SetInProgress", "81"), "0C01:010001"}},
        [](Sim::ManagementController& c) { c.lan().setInProgress.write(1); }, 2,
        [](Sim::Machine& machine)
        { EXPECT_TRUE(machine.managementController()->lan().setInProgress.inProgress()); });
}

// Without a controller every command is not available.
TEST(Wd100Page, BadValuesAndUnknownCommandsAreAnsweredBeforeAnythingIsSent)
{
    Sim::Machine machine;
    onSimulatedServer(
        machine,
        [](Sim::Machine&)
        {
            for (const char* query : {"Command=Query", "Command=SetPowerPolicy&Policy=x"})
                EXPECT_EQ("{\"ErrorCode\":1}", TestSupport::runPage("wd100.nsp", query));
        });
    const std::pair<const char*, const char*> bad[] = {
        {"Reset", "Command"},
        {"", "Command"},
        {"SetNetwork&IPSource=BIOS", "IPSource"},
        {"SetNetwork&IPAddress=10.0.0", "IPAddress"},
        {"SetNetwork&IPAddress=10.0.0.256", "IPAddress"},
        {"SetNetwork&IPAddress=10.0.0.1.2", "IPAddress"},
        {"SetNetwork&IPAddress=10.0.0.1%20", "IPAddress"},
        {"SetNetwork&IPAddress=10.0.0.5&SubnetMask=255.0.255.0", "SubnetMask"},
        {"SetNetwork&Gateway=a.b.c.d", "Gateway"},
        {"SetNetwork&VLANID=4095", "VLANID"},
        {"SetUser&Name=x", "ID"},
        {"SetUser&ID=0&Name=x", "ID"},
        {"SetUser&ID=3&Name=x", "ID"},
        {"SetUser&ID=2&Name=seventeen-letters", "Name"},
        {"SetUser&ID=2&Name=tab%09tab", "Name"},
        {"SetUser&ID=1&Name=anyone", "Name"},
        {"SetUser&ID=2&Password=twenty-one-bytes-word", "Password"},
        {"SetUser&ID=2&Privilege=Callback", "Privilege"},
        {"SetUser&ID=2&Enabled=Maybe", "Enabled"},
        {"SetUser&ID=2&Enabled=No", "Enabled"}, // the last enabled administrator stays
        {"SetUser&ID=2&Privilege=Operator", "Privilege"},
        {"SetServices&LANEnabled=On", "LANEnabled"},
        {"SetServices&SOLEnabled=1", "SOLEnabled"},
        {"SetServices&BaudRate=4800", "BaudRate"},
        {"SetPowerPolicy&Policy=Sometimes", "Policy"},
    };
    std::vector<Step> steps;
    for (auto const& b : bad)
        steps.push_back({b.first, badValue(b.second), ""});
    onController(steps);
}

// Name, password (16 or 20 bytes), privilege with IPMI messaging on the LAN
// channel, then enable; the last enabled administrator stays, also where the
// controller leaves enable status unspecified (users on the channel count).
TEST(Wd100Page, SetUserSendsNamePasswordPrivilegeThenEnable)
{
    onController(
        {{"SetUser&ID=3&Name=night-shift&Password=tide-4&Privilege=operator&Enabled=yes", kDone,
          "0645:03'night-shift'00*5 0647:0302'tide-4'00*10 0643:910303 0647:0301"},
         {"Query",
          HasSubstr("{\"ID\":3,\"Name\":\"night-shift\",\"Enabled\":\"Yes\",\"Privilege\":"
                    "\"Operator\"}"),
          ""},
         {"SetUser&ID=4&Password=seventeen-letters", kDone, "0647:8402'seventeen-letters'00*3"},
         {"SetUser&ID=4&Enabled=No&Privilege=NoAccess", kDone, "0643:91040F 0647:0400"},
         {"SetUser&ID=2&Name=chief&Privilege=Administrator", kDone, _},
         {"SetUser&ID=3&Name=deputy&Privilege=Administrator&Enabled=Yes", kDone, _},
         {"SetUser&ID=2&Enabled=No", kDone, "0647:0200"},
         {"SetUser&ID=3&Enabled=No", badValue("Enabled"), ""}},
        {}, 4,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ("tide-4", machine.managementController()->users().user(3).password);
            EXPECT_FALSE(machine.managementController()->users().user(2).enabled);
        });
    onController({{"Query",
                   HasSubstr("\"Users\":[{\"ID\":1,\"Name\":\"\",\"Enabled\":\"No\",\"Privilege\":"
                             "\"NoAccess\"},{\"ID\":2,\"Name\":\"admin\",\"Enabled\":\"Yes\","
                             "\"Privilege\":\"Administrator\"}]"),
                   ""},
                  {"SetUser&ID=2&Enabled=No", badValue("Enabled"), ""}},
                 [](Sim::ManagementController& c)
                 {
                     c.users().reportsEnableStatus = false;
                     c.refuse(0x06, 0x46, {0x01}, 0xCC);
                 });
}

// The access mode goes into both settings, the alerting switch kept; a
// refusal names the request and its completion code, and nothing follows.
TEST(Wd100Page, SetServicesAndPowerPolicyAndTheirRefusals)
{
    onController(
        {{"SetServices&LANEnabled=No&SOLEnabled=No&BaudRate=19200", kDone,
          "0640:016000 0640:01A000 0C21:010001 0C21:010100 0C21:010507 0C21:010607 0C21:010002 "
          "0C21:010000"},
         {"SetPowerPolicy&Policy=alwayson", kDone, "0006:02"},
         {"Query",
          HasSubstr("\"Services\":{\"LANEnabled\":\"No\",\"SOLEnabled\":\"No\",\"BaudRate\":"
                    "19200},\"PowerPolicy\":\"AlwaysOn\","),
          ""}},
        [](Sim::ManagementController& c) { c.lan().nonVolatileAccess = 0x22; });
    onController(
        {{"SetUser&ID=2&Name=chief&Password=new-one", refused("Name", "CC"), "0645:02'chief'00*11"},
         {"SetServices&LANEnabled=No&SOLEnabled=No", refused("LANEnabled", "CC"), _},
         {"SetPowerPolicy&Policy=AlwaysOff", refused("Policy", "D6"), "0006:00"},
         {"SetServices&BaudRate=9600", refused("BaudRate", "80"), _}},
        [](Sim::ManagementController& c)
        {
            c.refuse(0x06, 0x45, {}, 0xCC);
            c.refuse(0x06, 0x40, {0x01, 0x80}, 0xCC); // the active access mode
            c.refuse(0x00, 0x06, {0x00}, 0xD6);
            c.refuse(0x0C, 0x21, {0x01, 0x06}, 0x80); // the volatile bit rate
        },
        2,
        [](Sim::Machine& machine)
        {
            EXPECT_THAT(ipmiLog(machine, 0, "0C21"), testing::EndsWith("0C21:010000"));
            machine.managementController()->silent = true;
            EXPECT_EQ(refused("Policy", "none"),
                      TestSupport::runPage("wd100.nsp", "Command=SetPowerPolicy&Policy=AlwaysOn"));
        });
}
