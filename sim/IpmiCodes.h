#pragma once

#include <cstdint>

namespace Sim
{

// Network functions and completion codes of a standard management
// controller, as the simulated one answers them.
namespace IpmiCodes
{
const std::uint8_t kChassis = 0x00;
const std::uint8_t kApplication = 0x06;
const std::uint8_t kTransport = 0x0C;

const std::uint8_t kDone = 0x00;
// Parameter not supported (configuration parameters), or password test failed.
const std::uint8_t kParameterNotSupported = 0x80;
// A set-in-progress mark while one is already set.
const std::uint8_t kSetAlreadyInProgress = 0x81;
const std::uint8_t kInvalidCommand = 0xC1;
const std::uint8_t kRequestDataLength = 0xC7;
const std::uint8_t kInvalidData = 0xCC;
} // namespace IpmiCodes

} // namespace Sim
