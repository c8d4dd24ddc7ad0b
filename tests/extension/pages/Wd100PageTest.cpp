#include "PageRun.h"

#include "tests/support/SimulatedServer.h"

#include <string>
#include <vector>

namespace
{
typedef std::vector<std::uint8_t> Bytes;

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

std::string wd100(const std::string& query)
{
    return runPage("wd100.nsp", query);
}

std::string badValue(const std::string& parameter)
{
    return "{\"ErrorCode\":2,\"Parameter\":\"" + parameter + "\"}";
}

std::string refused(const std::string& request, const std::string& code)
{
    return "{\"ErrorCode\":1,\"Request\":\"" + request + "\",\"CompletionCode\":\"" + code + "\"}";
}

// A controller as in the examples: two user IDs, user 2 the administrator.
Sim::ManagementController& addTwoUserController(Sim::Machine& machine)
{
    Sim::ManagementController& controller = machine.addManagementController();
    controller.users().resize(2);
    return controller;
}

// The data of the requests of `netfn`/`cmd`, in order, from request `from` on.
std::vector<Bytes> sent(Sim::Machine& machine, std::uint8_t netfn, std::uint8_t cmd,
                        std::size_t from = 0)
{
    std::vector<Bytes> found;
    auto const& requests = machine.managementController()->requests();
    for (std::size_t i = from; i < requests.size(); ++i)
        if (requests[i].netfn == netfn && requests[i].cmd == cmd)
            found.push_back(requests[i].data);
    return found;
}

// How many requests that change a setting the controller received.
std::size_t changes(Sim::Machine& machine)
{
    const std::pair<std::uint8_t, std::uint8_t> kSetters[] = {
        {0x0C, 0x01}, {0x0C, 0x21}, {0x06, 0x40}, {0x06, 0x43},
        {0x06, 0x45}, {0x06, 0x47}, {0x00, 0x06}, {0x00, 0x08}};
    std::size_t count = 0;
    for (auto const& setter : kSetters)
        count += sent(machine, setter.first, setter.second).size();
    return count;
}

Bytes padded(const std::string& text, std::size_t length)
{
    Bytes bytes(text.begin(), text.end());
    bytes.resize(length, 0);
    return bytes;
}

Bytes concatenated(Bytes first, Bytes const& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}
} // namespace

TEST(Wd100Page, WithoutAControllerEveryCommandIsNotAvailable)
{
    Sim::Machine machine;
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          EXPECT_EQ("{\"ErrorCode\":1}", wd100("Command=Query"));
                          EXPECT_EQ("{\"ErrorCode\":1}", wd100("Command=SetPowerPolicy&Policy=x"));
                      });
}

TEST(Wd100Page, UnknownOrMissingCommandNamesTheParameter)
{
    Sim::Machine machine;
    addTwoUserController(machine);
    onSimulatedServer(machine,
                      [](Sim::Machine& machine)
                      {
                          EXPECT_EQ(badValue("Command"), wd100("Command=Reset"));
                          EXPECT_EQ(badValue("Command"), wd100(""));
                          EXPECT_EQ(0u, changes(machine));
                      });
}

TEST(Wd100Page, QueryAnswersEverySectionFromTheLANChannel)
{
    Sim::Machine machine;
    addTwoUserController(machine);
    onSimulatedServer(machine,
                      [](Sim::Machine& machine)
                      {
                          EXPECT_EQ(kQueryOfTwoUsers, wd100("Command=Query"));
                          EXPECT_EQ(kQueryOfTwoUsers, wd100("command=QUERY"));
                          // The LAN channel is found by its medium, channel 0
                          // first; never through "this channel" (0Eh).
                          std::vector<Bytes> channels = sent(machine, 0x06, 0x42);
                          ASSERT_LE(2u, channels.size());
                          EXPECT_EQ(Bytes{0x00}, channels[0]);
                          EXPECT_EQ(Bytes{0x01}, channels[1]);
                          for (Bytes const& channel : channels)
                              EXPECT_GE(0x0B, channel.at(0));
                          EXPECT_EQ((Bytes{0x01, 0x05, 0x00, 0x00}), sent(machine, 0x0C, 0x22)[1])
                              << "the non-volatile SOL bit rate";
                          EXPECT_EQ(0u, changes(machine));
                      });
}

TEST(Wd100Page, QueryEscapesNamesAndReadsOtherSettings)
{
    Sim::Machine machine;
    Sim::ManagementController& controller = machine.addManagementController();
    controller.users().resize(3);
    controller.users().user(3).name = "q\"x\\y\x01\xE9";
    controller.users().user(3).privilege = 2;
    controller.lan().channel = 6;
    controller.lan().ipSource = 2;
    controller.lan().vlan = 300;
    controller.sol().enabled = false;
    controller.sol().nonVolatileBitRate = 0;
    controller.powerRestorePolicy = 2;
    onSimulatedServer(
        machine,
        [](Sim::Machine&)
        {
            std::string answer = wd100("Command=Query");
            EXPECT_NE(std::string::npos,
                      answer.find("{\"ID\":3,\"Name\":\"q\\\"x\\\\y\\u0001\\u00E9\","
                                  "\"Enabled\":\"No\",\"Privilege\":\"User\"}]"))
                << answer;
            EXPECT_NE(std::string::npos,
                      answer.find("\"Network\":{\"Channel\":6,\"IPSource\":\"DHCP\","))
                << answer;
            EXPECT_NE(std::string::npos, answer.find("\"VLANID\":300}")) << answer;
            EXPECT_NE(std::string::npos,
                      answer.find("\"Services\":{\"LANEnabled\":\"Yes\",\"SOLEnabled\":\"No\","
                                  "\"BaudRate\":0}"))
                << answer;
            EXPECT_NE(std::string::npos, answer.find("\"PowerPolicy\":\"AlwaysOn\",")) << answer;
        });
}

TEST(Wd100Page, QueryListsWhatTheControllerDoesNotSupport)
{
    Sim::Machine machine;
    addTwoUserController(machine);
    Sim::ManagementController& controller = *machine.managementController();
    controller.refuse(0x0C, 0x22, {}, 0xC1);       // no serial over LAN
    controller.refuse(0x00, 0x01, {}, 0xC1);       // no chassis status
    controller.answerNextWith({0x00});             // the presence test
    controller.answerNextWith({0x00, 0x20, 0x01}); // a short Get Device ID
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          std::string answer = wd100("Command=Query");
                          EXPECT_EQ(0u, answer.find("{\"ErrorCode\":0,\"Network\":{"));
                          EXPECT_NE(std::string::npos, answer.find("\"Users\":[{\"ID\":1,"));
                          EXPECT_EQ(std::string::npos, answer.find("\"Services\":{"));
                          EXPECT_NE(std::string::npos,
                                    answer.find(",\"Unsupported\":[\"Identity\",\"Services\","
                                                "\"PowerPolicy\"]}"))
                              << answer;
                      });

    // Without a LAN channel among channels 0..11 the channel's sections are
    // left out.
    Sim::Machine withoutLAN;
    addTwoUserController(withoutLAN);
    withoutLAN.managementController()->lan().channel = 13;
    onSimulatedServer(withoutLAN,
                      [](Sim::Machine& machine)
                      {
                          std::string answer = wd100("Command=Query");
                          EXPECT_EQ(0u, answer.find("{\"ErrorCode\":0,\"Identity\":{"));
                          EXPECT_NE(std::string::npos,
                                    answer.find("\"PowerPolicy\":\"Previous\",\"Unsupported\":["
                                                "\"Network\",\"Users\",\"Services\"]}"))
                              << answer;
                          EXPECT_EQ(12u, sent(machine, 0x06, 0x42).size()) << "channels 0..11";
                          EXPECT_EQ("{\"ErrorCode\":1}",
                                    wd100("Command=SetNetwork&IPAddress=10.0.0.5"));
                          EXPECT_EQ(0u, changes(machine));
                      });
}

TEST(Wd100Page, SetNetworkWritesInsideOneSetInProgressSequence)
{
    Sim::Machine machine;
    addTwoUserController(machine);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(kDone, wd100("Command=SetNetwork&IPSource=static&IPAddress=10.0.0.5"
                                   "&SubnetMask=255.255.254.0&Gateway=10.0.0.1&VLANID=300"));
            std::vector<Bytes> expected = {{1, 0, 1},
                                           {1, 4, 1},
                                           {1, 3, 10, 0, 0, 5},
                                           {1, 6, 255, 255, 254, 0},
                                           {1, 12, 10, 0, 0, 1},
                                           {1, 20, 0x2C, 0x81},
                                           {1, 0, 2},
                                           {1, 0, 0}};
            EXPECT_EQ(expected, sent(machine, 0x0C, 0x01));
            EXPECT_EQ(1u, machine.managementController()->lan().setInProgress.commits());

            std::string answer = wd100("Command=Query");
            EXPECT_NE(std::string::npos,
                      answer.find("\"IPSource\":\"Static\",\"IPAddress\":\"10.0.0.5\","
                                  "\"SubnetMask\":\"255.255.254.0\",\"Gateway\":\"10.0.0.1\","))
                << answer;
            EXPECT_NE(std::string::npos, answer.find("\"VLANID\":300}")) << answer;

            // Only what is given is sent; VLAN 0 switches the VLAN off.
            std::size_t before = machine.managementController()->requests().size();
            EXPECT_EQ(kDone, wd100("Command=SetNetwork&IPSource=DHCP&VLANID=0"));
            expected = {{1, 0, 1}, {1, 4, 2}, {1, 20, 0, 0}, {1, 0, 2}, {1, 0, 0}};
            EXPECT_EQ(expected, sent(machine, 0x0C, 0x01, before));

            before = machine.managementController()->requests().size();
            EXPECT_EQ(kDone, wd100("Command=SetNetwork"));
            EXPECT_TRUE(sent(machine, 0x0C, 0x01, before).empty());
        });
}

TEST(Wd100Page, AFailedNetworkWriteStillEndsWithSetComplete)
{
    Sim::Machine machine;
    addTwoUserController(machine);
    machine.managementController()->refuse(0x0C, 0x01, {1, 6}, 0xCC);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(refused("SubnetMask", "CC"),
                      wd100("Command=SetNetwork&IPAddress=10.0.0.5&SubnetMask=255.0.0.0"
                            "&Gateway=10.0.0.1"));
            // Nothing after the refused write but set complete: no gateway,
            // no commit.
            std::vector<Bytes> expected = {
                {1, 0, 1}, {1, 3, 10, 0, 0, 5}, {1, 6, 255, 0, 0, 0}, {1, 0, 0}};
            EXPECT_EQ(expected, sent(machine, 0x0C, 0x01));
            EXPECT_FALSE(machine.managementController()->lan().setInProgress.inProgress());
            EXPECT_EQ(0u, machine.managementController()->lan().setInProgress.commits());
        });

    Sim::Machine refusedCommit;
    addTwoUserController(refusedCommit);
    refusedCommit.managementController()->refuse(0x0C, 0x01, {1, 0, 2}, 0xD5);
    onSimulatedServer(refusedCommit,
                      [](Sim::Machine& machine)
                      {
                          EXPECT_EQ(refused("Commit", "D5"),
                                    wd100("Command=SetNetwork&Gateway=10.0.0.1"));
                          EXPECT_EQ((Bytes{1, 0, 0}), sent(machine, 0x0C, 0x01).back());
                      });
}

TEST(Wd100Page, ASecondSetInProgressIsLeftAlone)
{
    Sim::Machine machine;
    addTwoUserController(machine);
    machine.managementController()->lan().setInProgress.write(1);
    onSimulatedServer(machine,
                      [](Sim::Machine& machine)
                      {
                          EXPECT_EQ(refused("SetInProgress", "81"),
                                    wd100("Command=SetNetwork&IPAddress=10.0.0.5"));
                          EXPECT_EQ((std::vector<Bytes>{{1, 0, 1}}), sent(machine, 0x0C, 0x01))
                              << "no write and no set complete: the set belongs to another";
                          EXPECT_TRUE(
                              machine.managementController()->lan().setInProgress.inProgress());
                      });
}

TEST(Wd100Page, BadValuesAreAnsweredBeforeAnythingIsSent)
{
    Sim::Machine machine;
    addTwoUserController(machine);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            const struct
            {
                const char* query;
                const char* parameter;
            } kBad[] = {
                {"SetNetwork&IPSource=BIOS", "IPSource"},
                {"SetNetwork&IPAddress=10.0.0", "IPAddress"},
                {"SetNetwork&IPAddress=10.0.0.256", "IPAddress"},
                {"SetNetwork&IPAddress=10.0.0.1.2", "IPAddress"},
                {"SetNetwork&IPAddress=10.0.0.1%20", "IPAddress"},
                {"SetNetwork&IPAddress=10.0.0.5&SubnetMask=255.0.255.0", "SubnetMask"},
                {"SetNetwork&Gateway=a.b.c.d", "Gateway"},
                {"SetNetwork&VLANID=4095", "VLANID"},
                {"SetNetwork&VLANID=-1", "VLANID"},
                {"SetUser&Name=x", "ID"},
                {"SetUser&ID=0&Name=x", "ID"},
                {"SetUser&ID=3&Name=x", "ID"},
                {"SetUser&ID=2&Name=seventeen-letters", "Name"},
                {"SetUser&ID=2&Name=tab%09tab", "Name"},
                {"SetUser&ID=1&Name=anyone", "Name"},
                {"SetUser&ID=2&Password=twenty-one-bytes-word", "Password"},
                {"SetUser&ID=2&Privilege=Callback", "Privilege"},
                {"SetUser&ID=2&Enabled=Maybe", "Enabled"},
                {"SetServices&LANEnabled=On", "LANEnabled"},
                {"SetServices&SOLEnabled=1", "SOLEnabled"},
                {"SetServices&BaudRate=4800", "BaudRate"},
                {"SetPowerPolicy&Policy=Sometimes", "Policy"},
            };
            for (auto const& bad : kBad)
                EXPECT_EQ(badValue(bad.parameter), wd100(std::string("Command=") + bad.query))
                    << bad.query;
            EXPECT_EQ(0u, changes(machine));
        });
}

TEST(Wd100Page, SetUserSendsNamePasswordPrivilegeThenEnable)
{
    Sim::Machine machine;
    machine.addManagementController().users().resize(4);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(kDone, wd100("Command=SetUser&ID=3&Name=night-shift&Password=tide-4&"
                                   "Privilege=operator&Enabled=yes"));
            EXPECT_EQ(std::vector<Bytes>{concatenated({3}, padded("night-shift", 16))},
                      sent(machine, 0x06, 0x45));
            std::vector<Bytes> passwords = {concatenated({3, 0x02}, padded("tide-4", 16)),
                                            {3, 0x01}};
            EXPECT_EQ(passwords, sent(machine, 0x06, 0x47));
            // IPMI messaging on the LAN channel, operator.
            EXPECT_EQ((std::vector<Bytes>{{0x91, 3, 3}}), sent(machine, 0x06, 0x43));
            EXPECT_EQ("tide-4", machine.managementController()->users().user(3).password);
            EXPECT_NE(std::string::npos,
                      wd100("Command=Query")
                          .find("{\"ID\":3,\"Name\":\"night-shift\",\"Enabled\":\"Yes\","
                                "\"Privilege\":\"Operator\"}"));

            // Over 16 bytes the password goes in the 20-byte form.
            std::size_t before = machine.managementController()->requests().size();
            EXPECT_EQ(kDone, wd100("Command=SetUser&ID=4&Password=seventeen-letters"));
            EXPECT_EQ(
                std::vector<Bytes>{concatenated({0x84, 0x02}, padded("seventeen-letters", 20))},
                sent(machine, 0x06, 0x47, before));
            before = machine.managementController()->requests().size();
            EXPECT_EQ(kDone, wd100("Command=SetUser&ID=4&Enabled=No&Privilege=NoAccess"));
            EXPECT_EQ((std::vector<Bytes>{{0x91, 4, 0x0F}}), sent(machine, 0x06, 0x43, before));
            EXPECT_EQ((std::vector<Bytes>{{4, 0x00}}), sent(machine, 0x06, 0x47, before));
        });
}

TEST(Wd100Page, TheLastEnabledAdministratorStays)
{
    Sim::Machine machine;
    machine.addManagementController().users().resize(3);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(badValue("Enabled"), wd100("Command=SetUser&ID=2&Enabled=No"));
            EXPECT_EQ(badValue("Privilege"), wd100("Command=SetUser&ID=2&Privilege=Operator"));
            EXPECT_EQ(badValue("Privilege"),
                      wd100("Command=SetUser&ID=2&Privilege=User&Enabled=No"));
            EXPECT_EQ(0u, changes(machine));
            // Other changes to the administrator are fine.
            EXPECT_EQ(kDone, wd100("Command=SetUser&ID=2&Name=chief&Privilege=Administrator"));

            // With a second administrator enabled, the first may go.
            EXPECT_EQ(
                kDone,
                wd100("Command=SetUser&ID=3&Name=deputy&Privilege=Administrator&Enabled=Yes"));
            EXPECT_EQ(kDone, wd100("Command=SetUser&ID=2&Enabled=No"));
            EXPECT_FALSE(machine.managementController()->users().user(2).enabled);
            EXPECT_EQ(badValue("Enabled"), wd100("Command=SetUser&ID=3&Enabled=No"));
        });
}

// A controller that leaves enable status unspecified and refuses the name of
// the null user (as some standard ones do): the users are read all the same,
// enabled when they reach the channel, and the last administrator still stays.
TEST(Wd100Page, UsersOfAControllerWithoutEnableStatus)
{
    Sim::Machine machine;
    Sim::ManagementController& controller = addTwoUserController(machine);
    controller.users().reportsEnableStatus = false;
    controller.refuse(0x06, 0x46, {0x01}, 0xCC);
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            const std::string users = "\"Users\":[{\"ID\":1,\"Name\":\"\",\"Enabled\":\"No\","
                                      "\"Privilege\":\"NoAccess\"},{\"ID\":2,\"Name\":\"admin\","
                                      "\"Enabled\":\"Yes\",\"Privilege\":\"Administrator\"}]";
            EXPECT_NE(std::string::npos, wd100("Command=Query").find(users));
            EXPECT_EQ(badValue("Enabled"), wd100("Command=SetUser&ID=2&Enabled=No"));
            EXPECT_EQ(0u, changes(machine));
        });
}

TEST(Wd100Page, RefusalsNameTheRequestAndTheCompletionCode)
{
    Sim::Machine machine;
    addTwoUserController(machine);
    Sim::ManagementController& controller = *machine.managementController();
    controller.refuse(0x06, 0x45, {}, 0xCC);
    controller.refuse(0x06, 0x40, {0x01, 0x80}, 0xCC); // the active access mode
    controller.refuse(0x00, 0x06, {0x00}, 0xD6);
    controller.refuse(0x0C, 0x21, {0x01, 0x06}, 0x80); // the volatile bit rate
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(refused("Name", "CC"),
                      wd100("Command=SetUser&ID=2&Name=chief&Password=new-one"));
            EXPECT_TRUE(sent(machine, 0x06, 0x47).empty()) << "nothing after the refusal";
            EXPECT_EQ(refused("LANEnabled", "CC"),
                      wd100("Command=SetServices&LANEnabled=No&SOLEnabled=No"));
            EXPECT_TRUE(sent(machine, 0x0C, 0x21).empty());
            EXPECT_EQ(refused("Policy", "D6"), wd100("Command=SetPowerPolicy&Policy=AlwaysOff"));
            EXPECT_EQ(refused("BaudRate", "80"), wd100("Command=SetServices&BaudRate=9600"));
            EXPECT_EQ((Bytes{1, 0, 0}), sent(machine, 0x0C, 0x21).back());

            machine.managementController()->silent = true;
            EXPECT_EQ(refused("Policy", "none"), wd100("Command=SetPowerPolicy&Policy=AlwaysOn"));
        });
}

TEST(Wd100Page, SetServicesAndPowerPolicy)
{
    Sim::Machine machine;
    addTwoUserController(machine);
    machine.managementController()->lan().nonVolatileAccess = 0x22; // alerting off, always
    onSimulatedServer(
        machine,
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(kDone,
                      wd100("Command=SetServices&LANEnabled=No&SOLEnabled=No&BaudRate=19200"));
            // The access mode in both settings, the alerting switch kept.
            EXPECT_EQ((std::vector<Bytes>{{1, 0x60, 0}, {1, 0xA0, 0}}), sent(machine, 0x06, 0x40));
            std::vector<Bytes> sol = {{1, 0, 1}, {1, 1, 0}, {1, 5, 7},
                                      {1, 6, 7}, {1, 0, 2}, {1, 0, 0}};
            EXPECT_EQ(sol, sent(machine, 0x0C, 0x21));
            EXPECT_EQ(kDone, wd100("Command=SetPowerPolicy&Policy=alwayson"));
            EXPECT_EQ(std::vector<Bytes>{{0x02}}, sent(machine, 0x00, 0x06));
            std::string answer = wd100("Command=Query");
            EXPECT_NE(std::string::npos,
                      answer.find("\"Services\":{\"LANEnabled\":\"No\",\"SOLEnabled\":\"No\","
                                  "\"BaudRate\":19200},\"PowerPolicy\":\"AlwaysOn\","))
                << answer;
        });
}
