#include "sim/ManagementUsers.h"

#include "sim/IpmiCodes.h"

#include <algorithm>

namespace Sim
{

namespace
{
using namespace IpmiCodes;

const std::uint8_t kSetUserAccess = 0x43;
const std::uint8_t kGetUserAccess = 0x44;
const std::uint8_t kSetUserName = 0x45;
const std::uint8_t kGetUserName = 0x46;
const std::uint8_t kSetUserPassword = 0x47;
const unsigned kMaximumUsers = 63;
const unsigned kNameLength = 16;
const std::uint8_t kNoAccess = 0x0F;

bool validPrivilege(std::uint8_t privilege)
{
    return (privilege >= 1 && privilege <= 5) || privilege == kNoAccess;
}

std::string bytesUpToNul(std::vector<std::uint8_t>::const_iterator from,
                         std::vector<std::uint8_t>::const_iterator to)
{
    return std::string(from, std::find(from, to, 0));
}
} // namespace

ManagementUsers::ManagementUsers() : m_users(10) {}

ManagementUser& ManagementUsers::user(unsigned id)
{
    if (id > m_users.size())
        m_users.resize(id);
    return m_users.at(id - 1);
}

void ManagementUsers::resize(unsigned count)
{
    m_users.resize(std::min(count, kMaximumUsers));
}

bool ManagementUsers::answer(std::uint8_t cmd, std::vector<std::uint8_t> const& data,
                             std::uint8_t channel, std::vector<std::uint8_t>& reply)
{
    switch (cmd)
    {
    case kGetUserAccess:
        reply = getAccess(data, channel);
        return true;
    case kSetUserAccess:
        reply = setAccess(data, channel);
        return true;
    case kGetUserName:
        reply = getName(data);
        return true;
    case kSetUserName:
        reply = setName(data);
        return true;
    case kSetUserPassword:
        reply = setPassword(data);
        return true;
    default:
        return false;
    }
}

std::vector<std::uint8_t> ManagementUsers::getAccess(std::vector<std::uint8_t> const& data,
                                                     std::uint8_t channel)
{
    if (data.size() != 2)
        return {kRequestDataLength};
    std::uint8_t id = data[1] & 0x3F;
    if ((data[0] & 0x0F) != channel || !validId(id))
        return {kInvalidData};
    unsigned enabledCount = static_cast<unsigned>(std::count_if(
        m_users.begin(), m_users.end(), [](ManagementUser const& u) { return u.enabled; }));
    ManagementUser const& chosen = m_users[id - 1];
    std::uint8_t status = !reportsEnableStatus ? 0x00 : chosen.enabled ? 0x40 : 0x80;
    bool messaging = chosen.messaging && (reportsEnableStatus || chosen.enabled);
    return {kDone, static_cast<std::uint8_t>(m_users.size()),
            static_cast<std::uint8_t>(status | (enabledCount & 0x3F)), 0x01,
            static_cast<std::uint8_t>((messaging ? 0x10 : 0x00) | chosen.privilege)};
}

std::vector<std::uint8_t> ManagementUsers::setAccess(std::vector<std::uint8_t> const& data,
                                                     std::uint8_t channel)
{
    if (data.size() != 3 && data.size() != 4)
        return {kRequestDataLength};
    std::uint8_t id = data[1] & 0x3F;
    std::uint8_t privilege = data[2] & 0x0F;
    if ((data[0] & 0x0F) != channel || !validId(id) || !validPrivilege(privilege))
        return {kInvalidData};
    ManagementUser& chosen = m_users[id - 1];
    if (data[0] & 0x80)
        chosen.messaging = (data[0] & 0x10) != 0;
    chosen.privilege = privilege;
    return {kDone};
}

std::vector<std::uint8_t> ManagementUsers::getName(std::vector<std::uint8_t> const& data)
{
    if (data.size() != 1)
        return {kRequestDataLength};
    std::uint8_t id = data[0] & 0x3F;
    if (!validId(id))
        return {kInvalidData};
    std::vector<std::uint8_t> reply(1 + kNameLength, 0);
    std::string const& name = m_users[id - 1].name;
    std::copy(name.begin(), name.begin() + std::min<std::size_t>(name.size(), kNameLength),
              reply.begin() + 1);
    return reply;
}

std::vector<std::uint8_t> ManagementUsers::setName(std::vector<std::uint8_t> const& data)
{
    if (data.size() != 1 + kNameLength)
        return {kRequestDataLength};
    std::uint8_t id = data[0] & 0x3F;
    if (!validId(id) || id == 1)
        return {kInvalidData};
    m_users[id - 1].name = bytesUpToNul(data.begin() + 1, data.end());
    return {kDone};
}

std::vector<std::uint8_t> ManagementUsers::setPassword(std::vector<std::uint8_t> const& data)
{
    if (data.size() < 2)
        return {kRequestDataLength};
    bool twentyBytes = (data[0] & 0x80) != 0;
    std::uint8_t id = data[0] & 0x3F;
    std::uint8_t operation = data[1] & 0x03;
    bool carriesPassword = operation >= 2;
    std::size_t expected = carriesPassword ? (twentyBytes ? 22 : 18) : 2;
    if (data.size() != expected)
        return {kRequestDataLength};
    if (!validId(id))
        return {kInvalidData};
    ManagementUser& chosen = m_users[id - 1];
    std::string password = carriesPassword ? bytesUpToNul(data.begin() + 2, data.end()) : "";
    switch (operation)
    {
    case 0:
        chosen.enabled = false;
        return {kDone};
    case 1:
        chosen.enabled = true;
        return {kDone};
    case 2:
        chosen.password = password;
        return {kDone};
    default:
        return {password == chosen.password ? kDone : kParameterNotSupported};
    }
}

} // namespace Sim
