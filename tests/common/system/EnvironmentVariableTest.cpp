#include "common/system/EnvironmentVariable.h"
#include "common/system/RomSignature.h"

#include "sim/RomServices.h"
#include "tests/support/SimulatedServer.h"

#include <string>
#include <vector>

using Common::EnvironmentVariable;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
namespace Rom = Sim::RomServices;

namespace
{
const unsigned kSecond = 1000000;

std::vector<std::uint8_t> bytes(std::string const& text)
{
    return std::vector<std::uint8_t>(text.begin(), text.end());
}

Sim::Machine& corvane(Sim::Machine& machine)
{
    Rom::addStandardRom(machine);
    machine.environment().set("RXHIPL", bytes("CD,HD,NIC"));
    machine.environment().set("RXTBT1", bytes("0"));
    machine.environment().set("RXLANG", bytes("en"));
    return machine;
}

std::vector<std::string> listed()
{
    std::vector<std::string> names;
    Common::list<Common::string> found = EnvironmentVariable::names();
    for (auto it = found.begin(); it != found.end(); ++it)
        names.push_back(it->c_str());
    return names;
}

std::string readText(char const* name, bool& ok, unsigned capacity = 64)
{
    unsigned char buffer[256] = {};
    unsigned size = capacity;
    ok = EnvironmentVariable::read(name, buffer, size);
    return std::string(reinterpret_cast<char*>(buffer), ok ? size : 0);
}
} // namespace

TEST(EnvironmentVariable, ReadsWritesAndListsTheRomsVariablesAndWaitsForABusyRom)
{
    Sim::Machine machine;
    onSimulatedServer(
        corvane(machine),
        [](Sim::Machine& server)
        {
            EXPECT_TRUE(EnvironmentVariable::supported());
            bool ok = false;
            EXPECT_EQ("CD,HD,NIC", readText("RXHIPL", ok));
            EXPECT_TRUE(ok);
            unsigned char order[] = {'N', 'I', 'C', ',', 'C', 'D'};
            unsigned size = sizeof order;
            EXPECT_TRUE(EnvironmentVariable::write("RXHIPL", order, size));
            EXPECT_EQ(bytes("NIC,CD"), *server.environment().value("RXHIPL"));
            unsigned char flag = '1';
            size = 1;
            EXPECT_TRUE(EnvironmentVariable::write("RXNEW1", &flag, size));
            EXPECT_EQ((std::vector<std::string>{"RXHIPL", "RXTBT1", "RXLANG", "RXNEW1"}), listed());
            EXPECT_EQ(0u, server.clock().now()) << "no waiting on a ready ROM";

            readText("NOSUCH", ok);
            EXPECT_FALSE(ok) << "unknown variable";
            readText("RXHIPL", ok, 4);
            EXPECT_FALSE(ok) << "buffer too small";
            EXPECT_FALSE(EnvironmentVariable::read(nullptr, nullptr, size));

            // A busy ROM is asked again every second, up to thirty times;
            // busy to the end counts as success, with nothing done.
            server.environment().answerBusy(3);
            EXPECT_EQ("NIC,CD", readText("RXHIPL", ok));
            EXPECT_EQ(3u * kSecond, server.clock().now());

            unsigned calls = server.environment().calls();
            server.environment().answerBusy(30);
            EXPECT_EQ(std::string(64, '\0'), readText("RXHIPL", ok)) << "nothing returned";
            EXPECT_TRUE(ok);
            EXPECT_EQ(30u, server.environment().calls() - calls);
            EXPECT_EQ(33u * kSecond, server.clock().now());
            server.environment().answerBusy(30);
            unsigned char data = 'X';
            size = 1;
            EXPECT_TRUE(EnvironmentVariable::write("RXTBT1", &data, size));
            EXPECT_EQ(bytes("0"), *server.environment().value("RXTBT1"));
            server.environment().answerBusy(30);
            EXPECT_EQ((std::vector<std::string>{"RXTBT1", "RXLANG", "RXNEW1"}), listed())
                << "the index that stayed busy is skipped";
        });
}

TEST(EnvironmentVariable, SupportedOnlyWithTheSignatureVariablesPciBiosAndPrivilege)
{
    Sim::Machine unsignedRom;
    corvane(unsignedRom).memory().write(0xFFFEA, std::string("ACMEXX"));
    onSimulatedServer(unsignedRom,
                      [](Sim::Machine&)
                      {
                          CaptureStderr();
                          EXPECT_FALSE(EnvironmentVariable::supported());
                          bool ok = true;
                          readText("RXHIPL", ok);
                          EXPECT_FALSE(ok);
                          EXPECT_TRUE(listed().empty());
                          EXPECT_EQ("Not a ZR Corvane Server!\n", GetCapturedStderr())
                              << "printed once: the answer is kept";
                          EXPECT_FALSE(IsVelmarServer());
                      });

    Sim::Machine emptyStore;
    Rom::addStandardRom(emptyStore);
    onSimulatedServer(emptyStore,
                      [](Sim::Machine& server)
                      {
                          EXPECT_TRUE(IsVelmarServer());
                          EXPECT_FALSE(EnvironmentVariable::supported()) << "the first listing fails";
                          server.environment().set("RXHIPL", bytes("CD"));
                          EXPECT_FALSE(EnvironmentVariable::supported()) << "kept for the process";
                      });

    Sim::Machine noPciBios;
    noPciBios.signVelmar();
    Rom::addServiceDirectory(noPciBios, Rom::kFirstDirectory,
                             {{Rom::kEnvironmentService, Rom::kEnvironmentEntry}});
    Rom::addEnvironmentServices(noPciBios, Rom::kInterrupt15, Rom::kEnvironmentEntry);
    noPciBios.environment().set("RXHIPL", bytes("CD"));
    onSimulatedServer(noPciBios,
                      [](Sim::Machine&) { EXPECT_FALSE(EnvironmentVariable::supported()); });

    Sim::Machine noPrivilege;
    corvane(noPrivilege).faults().noIOPrivilege = true;
    onSimulatedServer(noPrivilege,
                      [](Sim::Machine& server)
                      {
                          CaptureStderr();
                          EXPECT_FALSE(EnvironmentVariable::supported());
                          EXPECT_EQ(0u, server.environment().calls());
                          EXPECT_NE(std::string::npos, GetCapturedStderr().find("iopl(3): "));
                      });
}
