#include "sim/ManagementController.h"

#include "sim/IpmiCodes.h"

#include <algorithm>

namespace Sim
{

namespace
{
using namespace IpmiCodes;

const std::uint8_t kGetDeviceId = 0x01;
const std::uint8_t kGetChannelInfo = 0x42;
const std::uint8_t kGetChassisStatus = 0x01;
const std::uint8_t kChassisControl = 0x02;
const std::uint8_t kSetPowerRestorePolicy = 0x06;
const std::uint8_t kSetBootOptions = 0x08;
const std::uint8_t kGetBootOptions = 0x09;

const std::uint8_t kCurrentChannel = 0x0E;
const std::uint8_t kSystemInterface = 0x0F;
const std::uint8_t kMedium8023Lan = 0x04;
const std::uint8_t kMediumSystemInterface = 0x0C;

// Boot option parameters and the data bytes each takes (parameter 7, the
// boot initiator mailbox, takes a set selector and up to 16 bytes).
const std::map<std::uint8_t, std::size_t> kBootOptionLengths = {{0, 1}, {1, 1}, {2, 1}, {3, 1},
                                                                {4, 2}, {5, 5}, {6, 9}};
const std::uint8_t kBootMailbox = 7;
} // namespace

ManagementController::ManagementController()
{
    ManagementUser& administrator = m_users.user(2);
    administrator.name = "admin";
    administrator.password = "harbour-light";
    administrator.enabled = true;
    administrator.privilege = 4;
    administrator.messaging = true;
}

std::optional<std::vector<std::uint8_t>> ManagementController::answer(IpmiRequest const& request)
{
    m_requests.push_back(request);
    if (silent)
        return std::nullopt;
    if (!m_scripted.empty())
    {
        std::vector<std::uint8_t> reply = m_scripted.front();
        m_scripted.pop_front();
        return reply;
    }
    for (Refusal const& refusal : m_refusals)
        if (refusal.netfn == request.netfn && refusal.cmd == request.cmd &&
            request.data.size() >= refusal.dataPrefix.size() &&
            std::equal(refusal.dataPrefix.begin(), refusal.dataPrefix.end(), request.data.begin()))
            return std::vector<std::uint8_t>{refusal.completionCode};
    return respond(request);
}

void ManagementController::refuse(std::uint8_t netfn, std::uint8_t cmd,
                                  std::vector<std::uint8_t> const& dataPrefix,
                                  std::uint8_t completionCode)
{
    m_refusals.push_back({netfn, cmd, dataPrefix, completionCode});
}

std::vector<std::uint8_t> ManagementController::respond(IpmiRequest const& request)
{
    std::vector<std::uint8_t> reply;
    if (m_lan.answer(request.netfn, request.cmd, request.data, reply))
        return reply;
    if (request.netfn == kTransport &&
        m_sol.answer(request.cmd, request.data, m_lan.channel, reply))
        return reply;
    if (request.netfn == kApplication)
        return application(request);
    if (request.netfn == kChassis)
        return chassis(request);
    return {kInvalidCommand};
}

std::vector<std::uint8_t> ManagementController::application(IpmiRequest const& request)
{
    std::vector<std::uint8_t> reply;
    if (m_users.answer(request.cmd, request.data, m_lan.channel, reply))
        return reply;
    if (request.cmd == kGetDeviceId)
    {
        if (!request.data.empty())
            return {kRequestDataLength};
        reply = {kDone};
        reply.insert(reply.end(), deviceId.begin(), deviceId.end());
        return reply;
    }
    if (request.cmd == kGetChannelInfo)
        return channelInfo(request.data);
    return {kInvalidCommand};
}

std::vector<std::uint8_t> ManagementController::chassis(IpmiRequest const& request)
{
    std::vector<std::uint8_t> const& data = request.data;
    switch (request.cmd)
    {
    case kGetChassisStatus:
        if (!data.empty())
            return {kRequestDataLength};
        // Power on, no last event, no chassis state bits.
        return {kDone, static_cast<std::uint8_t>(0x01 | (powerRestorePolicy & 0x03) << 5), 0x00,
                0x00};
    case kSetPowerRestorePolicy:
        if (data.size() != 1)
            return {kRequestDataLength};
        if ((data[0] & 0x07) > 3)
            return {kInvalidData};
        if ((data[0] & 0x07) != 3)
            powerRestorePolicy = data[0] & 0x07;
        // Every policy is supported.
        return {kDone, 0x07};
    case kChassisControl:
        if (data.size() != 1)
            return {kRequestDataLength};
        m_chassisControls.push_back(data[0]);
        return {kDone};
    case kSetBootOptions:
        return setBootOption(data);
    case kGetBootOptions:
        return getBootOption(data);
    default:
        return {kInvalidCommand};
    }
}

std::vector<std::uint8_t>
ManagementController::channelInfo(std::vector<std::uint8_t> const& data) const
{
    if (data.size() != 1)
        return {kRequestDataLength};
    std::uint8_t channel = data[0] & 0x0F;
    if (channel == kCurrentChannel)
        channel = kSystemInterface;
    std::uint8_t medium;
    if (channel == m_lan.channel)
        medium = kMedium8023Lan;
    else if (channel == kSystemInterface)
        medium = kMediumSystemInterface;
    else
        return {kInvalidData};
    // Protocol IPMB-1.0 for the LAN, KCS for the system interface; the
    // IPMI forum's enterprise number; no auxiliary information.
    std::uint8_t protocol = medium == kMedium8023Lan ? 0x01 : 0x05;
    return {kDone, channel, medium, protocol, 0x80, 0xF2, 0x1B, 0x00, 0x00, 0x00};
}

std::vector<std::uint8_t> ManagementController::setBootOption(std::vector<std::uint8_t> const& data)
{
    if (data.empty())
        return {kRequestDataLength};
    std::uint8_t parameter = data[0] & 0x7F;
    auto length = kBootOptionLengths.find(parameter);
    if (length == kBootOptionLengths.end() && parameter != kBootMailbox)
        return {kParameterNotSupported};
    bool fits = parameter == kBootMailbox ? data.size() >= 2 && data.size() <= 18
                                          : data.size() == 1 + length->second;
    if (!fits)
        return {kRequestDataLength};
    if (parameter == 0)
        return {m_bootOptionsInProgress.write(data[1])};
    m_bootOptions[parameter] = std::vector<std::uint8_t>(data.begin() + 1, data.end());
    return {kDone};
}

std::vector<std::uint8_t>
ManagementController::getBootOption(std::vector<std::uint8_t> const& data) const
{
    if (data.size() != 3)
        return {kRequestDataLength};
    std::uint8_t parameter = data[0] & 0x7F;
    std::vector<std::uint8_t> reply = {kDone, 0x01, parameter};
    if (parameter == 0)
    {
        reply.push_back(m_bootOptionsInProgress.value());
        return reply;
    }
    auto found = m_bootOptions.find(parameter);
    if (found == m_bootOptions.end())
        return {kParameterNotSupported};
    reply.insert(reply.end(), found->second.begin(), found->second.end());
    return reply;
}

} // namespace Sim
