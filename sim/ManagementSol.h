#pragma once

#include "sim/SetInProgress.h"

#include <cstdint>
#include <vector>

namespace Sim
{

// Serial over LAN on the controller's LAN channel (network function
// transport: Get/Set SOL Configuration Parameters 0, 1, 5 and 6).
class ManagementSol
{
public:
    bool enabled = true;
    // Bit rate codes, bits 3..0: 0 the serial port's default, 6 9600,
    // 7 19200, 8 38400, 9 57600, 10 115200 bit/s.
    std::uint8_t nonVolatileBitRate = 10;
    std::uint8_t volatileBitRate = 10;
    SetInProgress setInProgress;

    // Answers the SOL configuration commands for `channel`; false for another
    // command.
    bool answer(std::uint8_t cmd, std::vector<std::uint8_t> const& data, std::uint8_t channel,
                std::vector<std::uint8_t>& reply);

private:
    std::vector<std::uint8_t> getParameter(std::vector<std::uint8_t> const& data);
    std::vector<std::uint8_t> setParameter(std::vector<std::uint8_t> const& data);
};

} // namespace Sim
