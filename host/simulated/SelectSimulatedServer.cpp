// Linked only into the simulated module (libtidewell_sim.so), never into the
// product module: when the module is loaded, this chooses the simulated
// server as the process's hardware backend, before any request can reach
// the hardware.
//
// The server is read from the machine description named by the environment
// variable TIDEWELL_SIMULATED_MACHINE (the module shell's --simulate sets
// it). Without the variable, or with a description that does not load, the
// module runs on an empty simulated server and says why on standard error:
// a simulated module must never fall back to the real machine.

#include "sim/Machine.h"
#include "sim/MachineDescription.h"
#include "sim/SimulatedHardware.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace
{
const char kDescriptionVariable[] = "TIDEWELL_SIMULATED_MACHINE";

// Lives until the process ends; its destruction removes the simulated
// server's scratch files.
struct SimulatedServer
{
    std::unique_ptr<Sim::Machine> machine = std::make_unique<Sim::Machine>();
    std::unique_ptr<Sim::SimulatedHardware> hardware;

    SimulatedServer()
    {
        const char* description = std::getenv(kDescriptionVariable);
        std::string error;
        if (description == nullptr || *description == '\0')
            std::fprintf(stderr, "tidewell_sim: %s is not set: an empty simulated server\n",
                         kDescriptionVariable);
        else if (!Sim::MachineDescription::Load(description, *machine, error))
        {
            std::fprintf(stderr, "tidewell_sim: %s: %s: an empty simulated server\n", description,
                         error.c_str());
            machine = std::make_unique<Sim::Machine>();
        }
        hardware = std::make_unique<Sim::SimulatedHardware>(*machine);
        if (!hardware->install())
            std::fprintf(stderr, "tidewell_sim: the hardware backend was already chosen\n");
    }
};

SimulatedServer server;
} // namespace
