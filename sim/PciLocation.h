#pragma once

#include <cstdint>
#include <tuple>

namespace Sim
{

// Bus, device and function of one PCI function of the simulated server.
struct PciLocation
{
    std::uint8_t bus = 0;
    std::uint8_t device = 0;
    std::uint8_t function = 0;

    bool operator<(PciLocation const& other) const
    {
        return std::tie(bus, device, function) < std::tie(other.bus, other.device, other.function);
    }
    bool operator==(PciLocation const& other) const
    {
        return bus == other.bus && device == other.device && function == other.function;
    }
};

} // namespace Sim
