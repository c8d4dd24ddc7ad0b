#include "tests/support/PageRun.h"
#include "tests/support/SimulatedServer.h"

#include <functional>
#include <string>
#include <vector>

namespace
{
typedef std::vector<std::uint8_t> Bytes;
typedef std::function<void(Sim::ManagementController&)> Setup;

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
    return TestSupport::runPage("wd100.nsp", query);
}

std::string badValue(const std::string& parameter)
{
    return "{\"ErrorCode\":2,\"Parameter\":\"" + parameter + "\"}";
}

std::string refused(const std::string& request, const std::string& code)
{
    return "{\"ErrorCode\":1,\"Request\":\"" + request + "\",\"CompletionCode\":\"" + code + "\"}";
}

// Runs body(machine) on a server whose controller has `users` user IDs
// (user 2 the administrator, as in the examples), after setup(controller).
template <class Body> void onController(Body body, Setup setup = {}, std::size_t users = 2)
{
    Sim::Machine machine;
    machine.addManagementController().users().resize(users);
    if (setup)
        setup(*machine.managementController());
    onSimulatedServer(machine, body);
}

Sim::ManagementController& controller(Sim::Machine& machine)
{
    return *machine.managementController();
}

// The data of the requests of `netfn`/`cmd`, in order, from request `from` on.
std::vector<Bytes> sent(Sim::Machine& machine, std::uint8_t netfn, std::uint8_t cmd,
                        std::size_t from = 0)
{
    std::vector<Bytes> found;
    auto const& requests = controller(machine).requests();
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

Bytes withText(Bytes first, const std::string& text, std::size_t length)
{
    first.insert(first.end(), text.begin(), text.end());
    first.resize(first.size() + length - text.size(), 0);
    return first;
}

bool contains(const std::string& answer, const std::string& part)
{
    return answer.find(part) != std::string::npos;
}
} // namespace

TEST(Wd100Page, WithoutAControllerEveryCommandIsNotAvailableAndUnknownCommandsAreNamed)
{
    Sim::Machine machine;
    onSimulatedServer(machine,
                      [](Sim::Machine&)
                      {
                          EXPECT_EQ("{\"ErrorCode\":1}", wd100("Command=Query"));
                          EXPECT_EQ("{\"ErrorCode\":1}", wd100("Command=SetPowerPolicy&Policy=x"));
                      });
    onController(
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(badValue("Command"), wd100("Command=Reset"));
            EXPECT_EQ(badValue("Command"), wd100(""));
            EXPECT_EQ(0u, changes(machine));
        });
}

// The LAN channel is found by its medium, channel 0 first; never through
// "this channel" (0Eh). Names are escaped for JSON.
TEST(Wd100Page, QueryAnswersEverySectionFromTheLANChannel)
{
    onController(
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(kQueryOfTwoUsers, wd100("command=QUERY"));
            std::vector<Bytes> channels = sent(machine, 0x06, 0x42);
            ASSERT_EQ(2u, channels.size());
            EXPECT_EQ((std::vector<Bytes>{{0x00}, {0x01}}), channels);
            EXPECT_EQ((Bytes{0x01, 0x05, 0x00, 0x00}), sent(machine, 0x0C, 0x22)[1])
                << "the non-volatile SOL bit rate";
            EXPECT_EQ(0u, changes(machine));
        });
    onController(
        [](Sim::Machine&)
        {
            std::string answer = wd100("Command=Query");
            for (const char* part :
                 {"{\"ID\":3,\"Name\":\"q\\\"x\\\\y\\u0001\\u00E9\",\"Enabled\":\"No\","
                  "\"Privilege\":\"User\"}]",
                  "\"Network\":{\"Channel\":6,\"IPSource\":\"DHCP\",", "\"VLANID\":300}",
                  "\"Services\":{\"LANEnabled\":\"Yes\",\"SOLEnabled\":\"No\",\"BaudRate\":0}",
                  "\"PowerPolicy\":\"AlwaysOn\","})
                EXPECT_TRUE(contains(answer, part)) << part << " in " << answer;
        },
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
}

TEST(Wd100Page, QueryListsWhatTheControllerDoesNotSupport)
{
    onController(
        [](Sim::Machine&)
        {
            std::string answer = wd100("Command=Query");
            EXPECT_EQ(0u, answer.find("{\"ErrorCode\":0,\"Network\":{"));
            EXPECT_TRUE(contains(answer, "\"Users\":[{\"ID\":1,"));
            EXPECT_TRUE(
                contains(answer, ",\"Unsupported\":[\"Identity\",\"Services\",\"PowerPolicy\"]}"))
                << answer;
        },
        [](Sim::ManagementController& c)
        {
            c.refuse(0x0C, 0x22, {}, 0xC1);       // no serial over LAN
            c.refuse(0x00, 0x01, {}, 0xC1);       // no chassis status
            c.answerNextWith({0x00});             // the presence test
            c.answerNextWith({0x00, 0x20, 0x01}); // a short Get Device ID
        });
    // Without a LAN channel among channels 0..11 its sections are left out.
    onController(
        [](Sim::Machine& machine)
        {
            std::string answer = wd100("Command=Query");
            EXPECT_EQ(0u, answer.find("{\"ErrorCode\":0,\"Identity\":{"));
            EXPECT_TRUE(contains(answer, "\"PowerPolicy\":\"Previous\",\"Unsupported\":["
                                         "\"Network\",\"Users\",\"Services\"]}"))
                << answer;
            EXPECT_EQ(12u, sent(machine, 0x06, 0x42).size()) << "channels 0..11";
            EXPECT_EQ("{\"ErrorCode\":1}", wd100("Command=SetNetwork&IPAddress=10.0.0.5"));
            EXPECT_EQ(0u, changes(machine));
        },
        [](Sim::ManagementController& c) { c.lan().channel = 13; });
}

// Every write sits inside one set-in-progress sequence, which ends with set
// complete also when a write is refused; a set begun by another is left alone.
TEST(Wd100Page, SetNetworkWritesInsideOneSetInProgressSequence)
{
    onController(
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(kDone, wd100("Command=SetNetwork&IPSource=static&IPAddress=10.0.0.5"
                                   "&SubnetMask=255.255.254.0&Gateway=10.0.0.1&VLANID=300"));
            EXPECT_EQ((std::vector<Bytes>{{1, 0, 1},
                                          {1, 4, 1},
                                          {1, 3, 10, 0, 0, 5},
                                          {1, 6, 255, 255, 254, 0},
                                          {1, 12, 10, 0, 0, 1},
                                          {1, 20, 0x2C, 0x81},
                                          {1, 0, 2},
                                          {1, 0, 0}}),
                      sent(machine, 0x0C, 0x01));
            EXPECT_EQ(1u, controller(machine).lan().setInProgress.commits());
            EXPECT_TRUE(
                contains(wd100("Command=Query"),
                         "\"IPSource\":\"Static\",\"IPAddress\":\"10.0.0.5\",\"SubnetMask\":"
                         "\"255.255.254.0\",\"Gateway\":\"10.0.0.1\",\"MACAddress\":\"02:1a:7e:00:"
                         "00:01\",\"VLANID\":300}"));
            // Only what is given is sent; VLAN 0 switches the VLAN off.
            std::size_t before = controller(machine).requests().size();
            EXPECT_EQ(kDone, wd100("Command=SetNetwork&IPSource=DHCP&VLANID=0"));
            EXPECT_EQ(
                (std::vector<Bytes>{{1, 0, 1}, {1, 4, 2}, {1, 20, 0, 0}, {1, 0, 2}, {1, 0, 0}}),
                sent(machine, 0x0C, 0x01, before));
            before = controller(machine).requests().size();
            EXPECT_EQ(kDone, wd100("Command=SetNetwork"));
            EXPECT_TRUE(sent(machine, 0x0C, 0x01, before).empty());
        });
    onController(
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(
                refused("SubnetMask", "CC"),
                wd100(
                    "Command=SetNetwork&IPAddress=10.0.0.5&SubnetMask=255.0.0.0&Gateway=10.0.0.1"));
            EXPECT_EQ((std::vector<Bytes>{
                          {1, 0, 1}, {1, 3, 10, 0, 0, 5}, {1, 6, 255, 0, 0, 0}, {1, 0, 0}}),
                      sent(machine, 0x0C, 0x01));
            EXPECT_FALSE(controller(machine).lan().setInProgress.inProgress());
            EXPECT_EQ(0u, controller(machine).lan().setInProgress.commits());
        },
        [](Sim::ManagementController& c) {
            c.refuse(0x0C, 0x01, {1, 6}, 0xCC);
        });
    onController(
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(refused("Commit", "D5"), wd100("Command=SetNetwork&Gateway=10.0.0.1"));
            EXPECT_EQ((Bytes{1, 0, 0}), sent(machine, 0x0C, 0x01).back());
        },
        [](Sim::ManagementController& c) {
            c.refuse(0x0C, 0x01, {1, 0, 2}, 0xD5);
        });
    onController(
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(refused("SetInProgress", "81"),
                      wd100("Command=SetNetwork&IPAddress=10.0.0.5"));
            EXPECT_EQ((std::vector<Bytes>{{1, 0, 1}}), sent(machine, 0x0C, 0x01));
            EXPECT_TRUE(controller(machine).lan().setInProgress.inProgress());
        },
        [](Sim::ManagementController& c) { c.lan().setInProgress.write(1); });
}

TEST(Wd100Page, BadValuesAreAnsweredBeforeAnythingIsSent)
{
    onController(
        [](Sim::Machine& machine)
        {
            const std::pair<const char*, const char*> kBad[] = {
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
                {"SetUser&ID=2&Enabled=No", "Enabled"}, // the last enabled administrator stays
                {"SetUser&ID=2&Privilege=Operator", "Privilege"},
                {"SetUser&ID=2&Privilege=User&Enabled=No", "Privilege"},
                {"SetServices&LANEnabled=On", "LANEnabled"},
                {"SetServices&SOLEnabled=1", "SOLEnabled"},
                {"SetServices&BaudRate=4800", "BaudRate"},
                {"SetPowerPolicy&Policy=Sometimes", "Policy"},
            };
            for (auto const& bad : kBad)
                EXPECT_EQ(badValue(bad.second), wd100(std::string("Command=") + bad.first))
                    << bad.first;
            EXPECT_EQ(0u, changes(machine));
        });
}

TEST(Wd100Page, SetUserSendsNamePasswordPrivilegeThenEnable)
{
    onController(
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(kDone, wd100("Command=SetUser&ID=3&Name=night-shift&Password=tide-4&"
                                   "Privilege=operator&Enabled=yes"));
            EXPECT_EQ(std::vector<Bytes>{withText({3}, "night-shift", 16)},
                      sent(machine, 0x06, 0x45));
            EXPECT_EQ((std::vector<Bytes>{withText({3, 0x02}, "tide-4", 16), {3, 0x01}}),
                      sent(machine, 0x06, 0x47));
            // IPMI messaging on the LAN channel, operator.
            EXPECT_EQ((std::vector<Bytes>{{0x91, 3, 3}}), sent(machine, 0x06, 0x43));
            EXPECT_EQ("tide-4", controller(machine).users().user(3).password);
            EXPECT_TRUE(
                contains(wd100("Command=Query"), "{\"ID\":3,\"Name\":\"night-shift\",\"Enabled\":"
                                                 "\"Yes\",\"Privilege\":\"Operator\"}"));
            // Over 16 bytes the password goes in the 20-byte form.
            std::size_t before = controller(machine).requests().size();
            EXPECT_EQ(kDone, wd100("Command=SetUser&ID=4&Password=seventeen-letters"));
            EXPECT_EQ(std::vector<Bytes>{withText({0x84, 0x02}, "seventeen-letters", 20)},
                      sent(machine, 0x06, 0x47, before));
            before = controller(machine).requests().size();
            EXPECT_EQ(kDone, wd100("Command=SetUser&ID=4&Enabled=No&Privilege=NoAccess"));
            EXPECT_EQ((std::vector<Bytes>{{0x91, 4, 0x0F}}), sent(machine, 0x06, 0x43, before));
            EXPECT_EQ((std::vector<Bytes>{{4, 0x00}}), sent(machine, 0x06, 0x47, before));
            // With a second administrator enabled, the first may go.
            EXPECT_EQ(kDone, wd100("Command=SetUser&ID=2&Name=chief&Privilege=Administrator"));
            EXPECT_EQ(
                kDone,
                wd100("Command=SetUser&ID=3&Name=deputy&Privilege=Administrator&Enabled=Yes"));
            EXPECT_EQ(kDone, wd100("Command=SetUser&ID=2&Enabled=No"));
            EXPECT_FALSE(controller(machine).users().user(2).enabled);
            EXPECT_EQ(badValue("Enabled"), wd100("Command=SetUser&ID=3&Enabled=No"));
        },
        {}, 4);
}

// A controller that leaves enable status unspecified and refuses the name of
// the null user (as some standard ones do): the users are read all the same,
// enabled when they reach the channel, and the last administrator stays.
TEST(Wd100Page, UsersOfAControllerWithoutEnableStatus)
{
    onController(
        [](Sim::Machine& machine)
        {
            EXPECT_TRUE(contains(wd100("Command=Query"),
                                 "\"Users\":[{\"ID\":1,\"Name\":\"\",\"Enabled\":\"No\","
                                 "\"Privilege\":\"NoAccess\"},{\"ID\":2,\"Name\":\"admin\","
                                 "\"Enabled\":\"Yes\",\"Privilege\":\"Administrator\"}]"));
            EXPECT_EQ(badValue("Enabled"), wd100("Command=SetUser&ID=2&Enabled=No"));
            EXPECT_EQ(0u, changes(machine));
        },
        [](Sim::ManagementController& c)
        {
            c.users().reportsEnableStatus = false;
            c.refuse(0x06, 0x46, {0x01}, 0xCC);
        });
}

TEST(Wd100Page, SetServicesAndPowerPolicyAndTheirRefusals)
{
    onController(
        [](Sim::Machine& machine)
        {
            EXPECT_EQ(kDone,
                      wd100("Command=SetServices&LANEnabled=No&SOLEnabled=No&BaudRate=19200"));
            // The access mode in both settings, the alerting switch kept.
            EXPECT_EQ((std::vector<Bytes>{{1, 0x60, 0}, {1, 0xA0, 0}}), sent(machine, 0x06, 0x40));
            EXPECT_EQ((std::vector<Bytes>{
                          {1, 0, 1}, {1, 1, 0}, {1, 5, 7}, {1, 6, 7}, {1, 0, 2}, {1, 0, 0}}),
                      sent(machine, 0x0C, 0x21));
            EXPECT_EQ(kDone, wd100("Command=SetPowerPolicy&Policy=alwayson"));
            EXPECT_EQ(std::vector<Bytes>{{0x02}}, sent(machine, 0x00, 0x06));
            EXPECT_TRUE(contains(wd100("Command=Query"),
                                 "\"Services\":{\"LANEnabled\":\"No\",\"SOLEnabled\":\"No\","
                                 "\"BaudRate\":19200},\"PowerPolicy\":\"AlwaysOn\","));
        },
        [](Sim::ManagementController& c)
        { c.lan().nonVolatileAccess = 0x22; }); // alerting off, always
    onController(
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
            controller(machine).silent = true;
            EXPECT_EQ(refused("Policy", "none"), wd100("Command=SetPowerPolicy&Policy=AlwaysOn"));
        },
        [](Sim::ManagementController& c)
        {
            c.refuse(0x06, 0x45, {}, 0xCC);
            c.refuse(0x06, 0x40, {0x01, 0x80}, 0xCC); // the active access mode
            c.refuse(0x00, 0x06, {0x00}, 0xD6);
            c.refuse(0x0C, 0x21, {0x01, 0x06}, 0x80); // the volatile bit rate
        });
}
