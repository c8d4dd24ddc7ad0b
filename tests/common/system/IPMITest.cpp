#include "common/system/IPMI.h"

#include "tests/support/SimulatedServer.h"

#include <cstring>
#include <string>
#include <vector>

using Common::IPMI;

namespace
{
const unsigned kSecond = 1000000;
typedef std::vector<std::uint8_t> Bytes;

Bytes bytes(unsigned char const* from, std::size_t length)
{
    return Bytes(from, from + length);
}

// The driver's modules, in the order they are loaded, `rounds` times.
std::vector<std::string> driverModules(int rounds)
{
    std::vector<std::string> modules;
    for (int round = 0; round < rounds; ++round)
        modules.insert(modules.end(), {"ipmi_msghandler", "ipmi_si", "ipmi_devintf", "ipmi_watchdog"});
    return modules;
}
} // namespace

TEST(IPMI, SendsToTheSystemInterfaceAndWaitsForRepliesCutToTheBuffer)
{
    Sim::Machine machine;
    machine.addManagementController();
    onSimulatedServer(machine,
                      [](Sim::Machine& server)
                      {
                          Sim::ManagementController& controller = *server.managementController();
                          IPMI ipmi;
                          // Typed requests are checked through the pages that send them.
                          controller.answerNextWith({0x00, 0x01, 0x05, 0x80, 0x04, 0x00, 0x07});
                          IPMI::_REQUEST_BOOT_FLAGS ask = {0x05, 0x00, 0x00};
                          IPMI::_GET_BOOT_FLAGS got = {};
                          ASSERT_TRUE(ipmi.execute(0x00, 0x09, ask, got));
                          EXPECT_EQ((Bytes{0x00, 0x01, 0x05, 0x80, 0x04, 0x00, 0x07}),
                                    bytes(reinterpret_cast<unsigned char*>(&got), sizeof got));
                          Sim::IpmiRequest const& first = controller.requests()[0];
                          EXPECT_EQ(0x0C, first.addressType) << "system interface";
                          EXPECT_EQ(0x0F, first.channel) << "the controller's own channel";
                          EXPECT_EQ(0, first.lun);
                          EXPECT_EQ(0x00, first.netfn);
                          EXPECT_EQ(0x09, first.cmd);
                          EXPECT_TRUE(server.loadedKernelModules().empty()) << "the node opened at once";

                          unsigned char ignored[] = {0x99};
                          unsigned char response[16] = {};
                          ASSERT_TRUE(ipmi.execute(0x06, 0x01, 2, ignored, 0, response, 16));
                          EXPECT_EQ(2, controller.requests().back().lun);
                          EXPECT_TRUE(controller.requests().back().data.empty()) << "length 0";
                          EXPECT_EQ(0x20, response[1]) << "device ID";

                          unsigned char buffer[8];
                          std::memset(buffer, 0xEE, sizeof buffer);
                          controller.answerNextWith({0x00, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
                          ASSERT_TRUE(ipmi.execute(0x06, 0x01, nullptr, 0, buffer, 4));
                          EXPECT_EQ((Bytes{0x00, 1, 2, 3, 0xEE, 0xEE, 0xEE, 0xEE}), bytes(buffer, 8));

                          std::memset(buffer, 0xEE, sizeof buffer);
                          controller.answerNextWith({0xC9, 0x42});
                          ASSERT_TRUE(ipmi.execute(0x06, 0x01, nullptr, 0, buffer, 8))
                              << "a completion code is the caller's business";
                          EXPECT_EQ((Bytes{0xC9, 0x42, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}), bytes(buffer, 8));

                          // A slow controller is waited for up to five seconds.
                          std::uint64_t start = server.clock().now();
                          controller.replyDelayMicroseconds = 4 * kSecond;
                          EXPECT_TRUE(ipmi.execute(0x06, 0x01, nullptr, 0, response, 16));
                          EXPECT_EQ(start + 4u * kSecond, server.clock().now());
                          controller.replyDelayMicroseconds = 6 * kSecond;
                          EXPECT_FALSE(ipmi.execute(0x06, 0x01, nullptr, 0, response, 16));
                          EXPECT_EQ(start + 9u * kSecond, server.clock().now());
                      });
}

// Without a device node the driver is loaded, up to twice, three seconds
// each time, and the node is made with the major the kernel lists.
TEST(IPMI, TheDriverIsLoadedAndTheNodeMadeOnlyWhenNoNodeOpens)
{
    const struct
    {
        bool controller;
        char const* node;
        bool nodeAfterLoading;
        bool supported;
        int rounds;
        std::vector<unsigned> nodesMade;
    } cases[] = {
        {true, "/dev/ipmidev/0", false, true, 0, {}},
        {true, "/dev/ipmi/0", false, true, 0, {}},
        {true, "", true, true, 1, {250}},
        {true, "", false, false, 2, {250, 250}},
        {false, "", false, false, 2, {}}, // no node without a listed major
    };
    for (auto const& c : cases)
    {
        Sim::Machine machine;
        if (c.controller)
        {
            Sim::ManagementController& controller = machine.addManagementController();
            controller.node = c.node;
            controller.nodeAfterLoading = c.nodeAfterLoading;
            controller.listedMajor = 250;
        }
        onSimulatedServer(machine,
                          [&c](Sim::Machine& server)
                          {
                              EXPECT_EQ(c.supported, IPMI::supported()) << c.node;
                              EXPECT_EQ(driverModules(c.rounds), server.loadedKernelModules());
                              EXPECT_EQ(c.nodesMade, server.ipmiNodesMade());
                              EXPECT_EQ(3u * c.rounds * kSecond, server.clock().now());
                              if (c.supported)
                                  return;
                              unsigned char response[1] = {0xEE};
                              EXPECT_FALSE(IPMI().execute(0x06, 0x01, nullptr, 0, response, 1));
                              EXPECT_EQ(0xEE, response[0]);
                          });
    }
}

TEST(IPMI, SupportedAsksAgainOnlyAfterAFailure)
{
    Sim::Machine machine;
    machine.addManagementController().answerNextWith({0xC0});
    onSimulatedServer(machine,
                      [](Sim::Machine& server)
                      {
                          auto const& requests = server.managementController()->requests();
                          EXPECT_FALSE(IPMI::supported()) << "completion code 0xC0";
                          EXPECT_TRUE(IPMI::supported());
                          EXPECT_TRUE(IPMI::supported());
                          ASSERT_EQ(2u, requests.size());
                          EXPECT_EQ(0x06, requests[1].netfn);
                          EXPECT_EQ(0x01, requests[1].cmd);
                      });
}
