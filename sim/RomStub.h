#pragma once

#include <cstdint>
#include <vector>

namespace Sim
{

class Machine;

// How a ROM entry point returns to its caller: like an interrupt handler
// (IRET; entered in call mode 1) or from a far call (far return; mode 2).
enum class RomReturn
{
    Interrupt,
    FarCall
};

// The x86 code placed at a simulated ROM entry point (28 bytes): it saves
// the registers and the flags, hands them to the service that `machine` keeps
// for `entry` (written in C++), loads what the service left, and returns as
// `returns` says. The service's carry flag lands in the flags the return
// restores. `machine` must stay at its address while the code can run.
std::vector<std::uint8_t> romStub(Machine const& machine, std::uint32_t entry, RomReturn returns);

} // namespace Sim
