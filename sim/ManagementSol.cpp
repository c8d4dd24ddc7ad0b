#include "sim/ManagementSol.h"

#include "sim/IpmiCodes.h"

namespace Sim
{

namespace
{
using namespace IpmiCodes;

const std::uint8_t kSetSolParameter = 0x21;
const std::uint8_t kGetSolParameter = 0x22;
const std::uint8_t kRevision = 0x11;

enum Parameter : std::uint8_t
{
    kSetInProgress = 0,
    kEnable = 1,
    kNonVolatileBitRate = 5,
    kVolatileBitRate = 6,
};

bool validBitRate(std::uint8_t code)
{
    return code == 0 || (code >= 6 && code <= 10);
}
} // namespace

bool ManagementSol::answer(std::uint8_t cmd, std::vector<std::uint8_t> const& data,
                           std::uint8_t channel, std::vector<std::uint8_t>& reply)
{
    if (cmd != kGetSolParameter && cmd != kSetSolParameter)
        return false;
    std::size_t expected = cmd == kGetSolParameter ? 4 : 3;
    bool known =
        data.size() >= 2 && (data[1] == kSetInProgress || data[1] == kEnable ||
                             data[1] == kNonVolatileBitRate || data[1] == kVolatileBitRate);
    if (data.size() >= 2 && !known)
        reply = {kParameterNotSupported};
    else if (data.size() != expected)
        reply = {kRequestDataLength};
    else if ((data[0] & 0x0F) != channel)
        reply = {kInvalidData};
    else
        reply = cmd == kGetSolParameter ? getParameter(data) : setParameter(data);
    return true;
}

std::vector<std::uint8_t> ManagementSol::getParameter(std::vector<std::uint8_t> const& data)
{
    if (data[0] & 0x80)
        return {kDone, kRevision};
    switch (data[1])
    {
    case kSetInProgress:
        return {kDone, kRevision, setInProgress.value()};
    case kEnable:
        return {kDone, kRevision, static_cast<std::uint8_t>(enabled ? 1 : 0)};
    case kNonVolatileBitRate:
        return {kDone, kRevision, nonVolatileBitRate};
    default:
        return {kDone, kRevision, volatileBitRate};
    }
}

std::vector<std::uint8_t> ManagementSol::setParameter(std::vector<std::uint8_t> const& data)
{
    std::uint8_t value = data[2];
    switch (data[1])
    {
    case kSetInProgress:
        return {setInProgress.write(value)};
    case kEnable:
        enabled = (value & 0x01) != 0;
        return {kDone};
    default:
        if (!validBitRate(value & 0x0F))
            return {kInvalidData};
        (data[1] == kNonVolatileBitRate ? nonVolatileBitRate : volatileBitRate) = value & 0x0F;
        return {kDone};
    }
}

} // namespace Sim
