#include "platform/Hardware.h"

#include "tests/support/SimulatedServer.h"

#include <string>

TEST(Hardware, BackendIsChosenOnceAndPlacesTheFixedPaths)
{
    Sim::Machine machine;
    auto check = [](Sim::Machine&)
    {
        Common::Platform::Hardware& chosen = Common::Platform::hardware();
        auto* simulated = dynamic_cast<Sim::SimulatedHardware*>(&chosen);
        ASSERT_NE(nullptr, simulated);
        EXPECT_EQ(simulated->root().string() + "/proc/bus/pci",
                  std::string(chosen.path("/proc/bus/pci").c_str()));

        Sim::Machine other;
        Sim::SimulatedHardware second(other);
        EXPECT_FALSE(second.install()) << "the first access fixed the choice";
        EXPECT_EQ(&chosen, &Common::Platform::hardware());
    };
    onSimulatedServer(machine, check);
}
