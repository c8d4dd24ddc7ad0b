#pragma once

#include "sim/Machine.h"
#include "sim/SimulatedHardware.h"

#include <cstdlib>

namespace Fuzz
{

// The simulated server of a fuzzing process, installed as the process's
// hardware backend. `prepare(machine)` describes the machine once, before
// the backend is installed (the files of its "/proc" and "/sys" are written
// then); every later call returns the same server and ignores its argument.
// Inputs change the machine's memory or files in place, so a target resets
// whatever it changes at the start of each input.
struct Server
{
    template <class Prepare> explicit Server(Prepare prepare) : hardware((prepare(machine), machine))
    {
        // A backend that cannot be installed makes every run meaningless.
        if (!hardware.install())
            std::abort();
    }

    Sim::Machine machine;
    Sim::SimulatedHardware hardware;
};

template <class Prepare> Server& server(Prepare prepare)
{
    static Server s_server(prepare);
    return s_server;
}

} // namespace Fuzz
