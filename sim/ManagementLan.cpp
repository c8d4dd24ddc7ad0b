#include "sim/ManagementLan.h"

#include "sim/IpmiCodes.h"

#include <algorithm>
#include <map>

namespace Sim
{

namespace
{
using namespace IpmiCodes;

const std::uint8_t kSetChannelAccess = 0x40;
const std::uint8_t kGetChannelAccess = 0x41;
const std::uint8_t kSetLanParameter = 0x01;
const std::uint8_t kGetLanParameter = 0x02;
const std::uint8_t kRevision = 0x11;

enum Parameter : std::uint8_t
{
    kSetInProgress = 0,
    kAddress = 3,
    kSource = 4,
    kMac = 5,
    kMask = 6,
    kGateway = 12,
    kVlan = 20,
};

// Data bytes each supported parameter takes.
const std::map<std::uint8_t, std::size_t> kLengths = {
    {kSetInProgress, 1}, {kAddress, 4}, {kSource, 1}, {kMac, 6},
    {kMask, 4},          {kGateway, 4}, {kVlan, 2}};

template <std::size_t N>
void store(std::array<std::uint8_t, N>& field, std::vector<std::uint8_t> const& data)
{
    std::copy(data.begin() + 2, data.begin() + 2 + N, field.begin());
}

template <std::size_t N>
void append(std::vector<std::uint8_t>& reply, std::array<std::uint8_t, N> const& field)
{
    reply.insert(reply.end(), field.begin(), field.end());
}
} // namespace

bool ManagementLan::answer(std::uint8_t netfn, std::uint8_t cmd,
                           std::vector<std::uint8_t> const& data, std::vector<std::uint8_t>& reply)
{
    if (netfn == kTransport && cmd == kGetLanParameter)
        reply = getParameter(data);
    else if (netfn == kTransport && cmd == kSetLanParameter)
        reply = setParameter(data);
    else if (netfn == kApplication && cmd == kGetChannelAccess)
        reply = getAccess(data);
    else if (netfn == kApplication && cmd == kSetChannelAccess)
        reply = setAccess(data);
    else
        return false;
    return true;
}

std::vector<std::uint8_t> ManagementLan::getParameter(std::vector<std::uint8_t> const& data)
{
    if (data.size() != 4)
        return {kRequestDataLength};
    if ((data[0] & 0x0F) != channel)
        return {kInvalidData};
    std::vector<std::uint8_t> reply = {kDone, kRevision};
    if (data[0] & 0x80)
        return reply;
    switch (data[1])
    {
    case kSetInProgress:
        reply.push_back(setInProgress.value());
        break;
    case kAddress:
        append(reply, address);
        break;
    case kSource:
        reply.push_back(ipSource);
        break;
    case kMac:
        append(reply, mac);
        break;
    case kMask:
        append(reply, mask);
        break;
    case kGateway:
        append(reply, gateway);
        break;
    case kVlan:
        reply.push_back(static_cast<std::uint8_t>(vlan & 0xFF));
        reply.push_back(static_cast<std::uint8_t>(vlan == 0 ? 0 : 0x80 | (vlan >> 8)));
        break;
    default:
        return {kParameterNotSupported};
    }
    return reply;
}

std::vector<std::uint8_t> ManagementLan::setParameter(std::vector<std::uint8_t> const& data)
{
    if (data.size() < 2)
        return {kRequestDataLength};
    auto length = kLengths.find(data[1]);
    if (length == kLengths.end())
        return {kParameterNotSupported};
    if (data.size() != 2 + length->second)
        return {kRequestDataLength};
    if ((data[0] & 0x0F) != channel)
        return {kInvalidData};
    switch (data[1])
    {
    case kSetInProgress:
        return {setInProgress.write(data[2])};
    case kAddress:
        store(address, data);
        break;
    case kSource:
        if ((data[2] & 0x0F) > 4)
            return {kInvalidData};
        ipSource = data[2] & 0x0F;
        break;
    case kMac:
        store(mac, data);
        break;
    case kMask:
        store(mask, data);
        break;
    case kGateway:
        store(gateway, data);
        break;
    case kVlan:
    {
        std::uint16_t id = static_cast<std::uint16_t>(data[2] | (data[3] & 0x0F) << 8);
        bool enabled = (data[3] & 0x80) != 0;
        if (enabled && (id == 0 || id == 0xFFF))
            return {kInvalidData};
        vlan = enabled ? id : 0;
        break;
    }
    }
    return {kDone};
}

std::vector<std::uint8_t> ManagementLan::getAccess(std::vector<std::uint8_t> const& data)
{
    if (data.size() != 2)
        return {kRequestDataLength};
    std::uint8_t which = data[1] >> 6;
    if ((data[0] & 0x0F) != channel || which == 0 || which == 3)
        return {kInvalidData};
    // Privilege limit: administrator.
    return {kDone, which == 1 ? nonVolatileAccess : volatileAccess, 0x04};
}

std::vector<std::uint8_t> ManagementLan::setAccess(std::vector<std::uint8_t> const& data)
{
    if (data.size() != 3)
        return {kRequestDataLength};
    std::uint8_t which = data[1] >> 6;
    if ((data[0] & 0x0F) != channel || which == 3 || (data[1] & 0x07) > 3)
        return {kInvalidData};
    std::uint8_t access = data[1] & 0x3F;
    if (which == 1)
        nonVolatileAccess = access;
    else if (which == 2)
        volatileAccess = access;
    return {kDone};
}

} // namespace Sim
