#pragma once

#include "sim/SetInProgress.h"

#include <array>
#include <cstdint>
#include <vector>

namespace Sim
{

// The controller's 802.3 LAN channel: its configuration parameters (network
// function transport: Get/Set LAN Configuration Parameters) and its access
// mode (application: Get/Set Channel Access).
class ManagementLan
{
public:
    std::uint8_t channel = 1;
    // Bits 3..0 of parameter 4: 1 static, 2 DHCP, 0, 3 and 4 other sources.
    std::uint8_t ipSource = 1;
    std::array<std::uint8_t, 4> address = {192, 168, 40, 12};
    std::array<std::uint8_t, 4> mask = {255, 255, 255, 0};
    std::array<std::uint8_t, 4> gateway = {192, 168, 40, 1};
    std::array<std::uint8_t, 6> mac = {0x02, 0x1A, 0x7E, 0x00, 0x00, 0x01};
    // 0: the VLAN is off.
    std::uint16_t vlan = 0;
    // Access modes, bits 2..0: 0 disabled, 1 pre-boot only, 2 always
    // available, 3 shared; with the alerting and authentication bits 5..3.
    std::uint8_t nonVolatileAccess = 0x02;
    std::uint8_t volatileAccess = 0x02;
    SetInProgress setInProgress;

    // Answers Get/Set LAN Configuration Parameters (transport) or Get/Set
    // Channel Access (application) for this channel; false for another
    // command.
    bool answer(std::uint8_t netfn, std::uint8_t cmd, std::vector<std::uint8_t> const& data,
                std::vector<std::uint8_t>& reply);

private:
    std::vector<std::uint8_t> getParameter(std::vector<std::uint8_t> const& data);
    std::vector<std::uint8_t> setParameter(std::vector<std::uint8_t> const& data);
    std::vector<std::uint8_t> getAccess(std::vector<std::uint8_t> const& data);
    std::vector<std::uint8_t> setAccess(std::vector<std::uint8_t> const& data);
};

} // namespace Sim
