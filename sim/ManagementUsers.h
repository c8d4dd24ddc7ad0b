#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Sim
{

// One user of the simulated management controller.
struct ManagementUser
{
    std::string name;     // up to 16 bytes
    std::string password; // up to 20 bytes
    bool enabled = false;
    // Channel privilege limit on the LAN channel: 1 callback, 2 user,
    // 3 operator, 4 administrator, 5 OEM, 0x0F no access.
    std::uint8_t privilege = 0x0F;
    bool messaging = false;
};

// The controller's user table and its commands (network function
// application): Get/Set User Access, Get/Set User Name, Set User Password.
// User IDs run from 1 to the table's size; user 1 is the null user, whose
// name cannot be set.
class ManagementUsers
{
public:
    ManagementUsers();

    // False: Get User Access leaves each user's enable status unspecified,
    // as controllers of IPMI 1.5 do; a disabled user then shows with IPMI
    // messaging off.
    bool reportsEnableStatus = true;

    // The user with this ID (1 .. size()); the table grows to hold it.
    ManagementUser& user(unsigned id);
    unsigned size() const { return static_cast<unsigned>(m_users.size()); }
    // Sets the number of user IDs (at most 63); users beyond it are dropped.
    void resize(unsigned count);

    // Answers a request of one of the commands above on `channel` (the LAN
    // channel, the only one with user privileges); false for another command.
    bool answer(std::uint8_t cmd, std::vector<std::uint8_t> const& data, std::uint8_t channel,
                std::vector<std::uint8_t>& reply);

private:
    bool validId(std::uint8_t id) const { return id >= 1 && id <= m_users.size(); }
    std::vector<std::uint8_t> getAccess(std::vector<std::uint8_t> const& data,
                                        std::uint8_t channel);
    std::vector<std::uint8_t> setAccess(std::vector<std::uint8_t> const& data,
                                        std::uint8_t channel);
    std::vector<std::uint8_t> getName(std::vector<std::uint8_t> const& data);
    std::vector<std::uint8_t> setName(std::vector<std::uint8_t> const& data);
    std::vector<std::uint8_t> setPassword(std::vector<std::uint8_t> const& data);

    std::vector<ManagementUser> m_users;
};

} // namespace Sim
