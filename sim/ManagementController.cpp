#include "sim/ManagementController.h"

namespace Sim
{

namespace
{
const std::uint8_t kApplication = 0x06;
const std::uint8_t kChassis = 0x00;
const std::uint8_t kGetDeviceId = 0x01;
const std::uint8_t kChassisControl = 0x02;
const std::uint8_t kSetBootOptions = 0x08;
const std::uint8_t kGetBootOptions = 0x09;
const std::uint8_t kInvalidCommand = 0xC1;
const std::uint8_t kParameterNotSupported = 0x80;
const std::uint8_t kRequestDataLength = 0xC7;
} // namespace

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
    return respond(request);
}

std::vector<std::uint8_t> ManagementController::respond(IpmiRequest const& request)
{
    std::vector<std::uint8_t> const& data = request.data;
    if (request.netfn == kApplication && request.cmd == kGetDeviceId)
        return {0x00, 0x20, 0x81, 0x02, 0x10, 0x02, 0xBF, 0x0B,
                0x00, 0x00, 0x00, 0x20, 0x01, 0x00, 0x00, 0x00};
    if (request.netfn != kChassis)
        return {kInvalidCommand};
    if (request.cmd == kChassisControl)
    {
        if (data.size() != 1)
            return {kRequestDataLength};
        m_chassisControls.push_back(data[0]);
        return {0x00};
    }
    if (request.cmd == kSetBootOptions)
    {
        if (data.empty())
            return {kRequestDataLength};
        m_bootOptions[data[0] & 0x7F] = std::vector<std::uint8_t>(data.begin() + 1, data.end());
        return {0x00};
    }
    if (request.cmd == kGetBootOptions)
    {
        if (data.size() != 3)
            return {kRequestDataLength};
        auto found = m_bootOptions.find(data[0] & 0x7F);
        if (found == m_bootOptions.end())
            return {kParameterNotSupported};
        std::vector<std::uint8_t> reply = {0x00, 0x01, static_cast<std::uint8_t>(data[0] & 0x7F)};
        reply.insert(reply.end(), found->second.begin(), found->second.end());
        return reply;
    }
    return {kInvalidCommand};
}

} // namespace Sim
