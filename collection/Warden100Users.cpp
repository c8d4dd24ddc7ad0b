#include "collection/ManagementCommands.h"
#include "collection/ManagementExchange.h"
#include "collection/Warden100.h"

#include <cstring>

namespace Collection
{

namespace
{
const unsigned int kNameLength = 16;
const unsigned int kShortPassword = 16;
const unsigned int kLongPassword = 20;
// Set User Password: bit 7 of byte 1 chooses the 20-byte form; operations.
const unsigned char kTwentyBytes = 0x80;
const unsigned char kDisableUser = 0x00;
const unsigned char kEnableUser = 0x01;
const unsigned char kSetPassword = 0x02;
// Set User Access, byte 1: change the switches; IPMI messaging on.
const unsigned char kChangeSwitches = 0x80;
const unsigned char kMessaging = 0x10;
// Get User Access, byte 2 bits 7..6: 01b the user ID is enabled, 10b it is
// disabled, 00b unspecified (as controllers of IPMI 1.5 answer).
const unsigned char kEnableStatus = 0xC0;
const unsigned char kEnabled = 0x40;
const unsigned char kDisabled = 0x80;
// Get User Access, byte 4: IPMI messaging on, and the privilege limit.
const unsigned char kMessagingOn = 0x10;
const unsigned char kPrivilegeMask = 0x0F;

ManagementResult send(const char* request, unsigned char cmd, const unsigned char* data,
                      unsigned char length)
{
    ManagementExchange set(ManagementCommands::kApplication, cmd, data, length);
    return set.succeeded(1) ? ManagementResult::success() : ManagementResult::refused(request, set);
}

ManagementResult setName(unsigned char id, const Common::string& name)
{
    unsigned char request[1 + kNameLength] = {id};
    std::memcpy(request + 1, name.c_str(), name.size() < kNameLength ? name.size() : kNameLength);
    return send("Name", ManagementCommands::kSetUserName, request, sizeof request);
}

ManagementResult setPassword(unsigned char id, const Common::string& password)
{
    unsigned char request[2 + kLongPassword] = {id, kSetPassword};
    unsigned int room = password.size() > kShortPassword ? kLongPassword : kShortPassword;
    if (room == kLongPassword)
        request[0] |= kTwentyBytes;
    std::memcpy(request + 2, password.c_str(), password.size() < room ? password.size() : room);
    return send("Password", ManagementCommands::kSetUserPassword, request,
                static_cast<unsigned char>(2 + room));
}

// Whether the user of a Get User Access reply is enabled. When the controller
// leaves that unspecified, the user counts as enabled exactly when it can
// reach the controller over the channel: IPMI messaging on and some privilege.
bool isEnabled(const ManagementExchange& access)
{
    const unsigned char status = access[2] & kEnableStatus;
    if (status == kEnabled || status == kDisabled)
        return status == kEnabled;
    return (access[4] & kMessagingOn) != 0 && (access[4] & kPrivilegeMask) != Warden100::kNoAccess;
}

bool isEnabledAdministrator(bool enabled, unsigned char privilege)
{
    return enabled && privilege == Warden100::kAdministrator;
}
} // namespace

bool Warden100::users(unsigned char channel, Common::list<_USER>& users) const
{
    users.clear();
    unsigned char maximum = 1;
    for (unsigned char id = 1; id <= maximum; ++id)
    {
        const unsigned char ask[] = {channel, id};
        ManagementExchange access(ManagementCommands::kApplication,
                                  ManagementCommands::kGetUserAccess, ask, sizeof ask);
        ManagementExchange name(ManagementCommands::kApplication, ManagementCommands::kGetUserName,
                                &id, 1);
        // Get User Access: completion code, maximum IDs, enabled IDs and
        // their status, fixed names, channel access. A controller may refuse
        // the name of a user ID that has none (often ID 1, the anonymous
        // user): that user reads as unnamed.
        if (!access.succeeded(5) || !name.answered())
            return false;
        if (id == 1)
            maximum = access[1] & 0x3F;
        if (maximum == 0)
            return true;
        char text[kNameLength + 1] = {};
        for (unsigned int i = 0; name.succeeded(1 + kNameLength) && i < kNameLength; ++i)
            text[i] = static_cast<char>(name[1 + i]);
        _USER user = {id, Common::string(text), isEnabled(access),
                      static_cast<unsigned char>(access[4] & kPrivilegeMask)};
        users.push_back(user);
    }
    return true;
}

const char* Warden100::lockoutCause(const Common::list<_USER>& users, const _USER_CHANGE& change)
{
    const _USER* target = nullptr;
    for (Common::list<_USER>::const_iterator it = users.begin(); it != users.end(); ++it)
    {
        if (it->id == change.id)
            target = &*it;
        else if (isEnabledAdministrator(it->enabled, it->privilege))
            return nullptr;
    }
    if (target == nullptr || !isEnabledAdministrator(target->enabled, target->privilege))
        return nullptr;
    if (change.setPrivilege && change.privilege != kAdministrator)
        return "Privilege";
    if (change.setEnabled && !change.enabled)
        return "Enabled";
    return nullptr;
}

ManagementResult Warden100::SetUser(unsigned char channel, const _USER_CHANGE& change)
{
    ManagementResult result = ManagementResult::success();
    if (change.setName)
        result = setName(change.id, change.name);
    if (result.done && change.setPassword)
        result = setPassword(change.id, change.password);
    if (result.done && change.setPrivilege)
    {
        const unsigned char request[] = {
            static_cast<unsigned char>(kChangeSwitches | kMessaging | (channel & 0x0F)), change.id,
            change.privilege};
        result = send("Privilege", ManagementCommands::kSetUserAccess, request, sizeof request);
    }
    if (result.done && change.setEnabled)
    {
        const unsigned char request[] = {change.id, change.enabled ? kEnableUser : kDisableUser};
        result = send("Enabled", ManagementCommands::kSetUserPassword, request, sizeof request);
    }
    return result;
}

} // namespace Collection
