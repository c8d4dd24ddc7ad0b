#include "collection/Warden100.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"
#include "extension/pages/Wd100Answers.h"
#include "extension/pages/Wd100Commands.h"
#include "extension/pages/Wd100Values.h"

using Collection::Warden100;

namespace
{
const unsigned int kLongestPassword = 20;
// User IDs are six bits wide.
const unsigned int kLastPossibleID = 63;

struct PrivilegeName
{
    const char* name;
    unsigned char level;
};
const PrivilegeName kPrivileges[] = {{"User", Warden100::kUser},
                                     {"Operator", Warden100::kOperator},
                                     {"Administrator", Warden100::kAdministrator},
                                     {"NoAccess", Warden100::kNoAccess}};

// The checks that need no controller: null when the request is fine, else
// the name of the first bad parameter.
const char* readChange(const NSPRequest& request, Warden100::_USER_CHANGE& change)
{
    unsigned int id = 0;
    if (!Wd100Values::decimal(Common::string(request("ID")), kLastPossibleID, id) || id == 0)
        return "ID";
    change.id = static_cast<unsigned char>(id);
    change.name = Common::string(request("Name"));
    change.setName = !change.name.empty();
    if (change.setName && !Wd100Values::userName(change.name))
        return "Name";
    change.password = Common::string(request("Password"));
    change.setPassword = !change.password.empty();
    if (change.password.size() > kLongestPassword)
        return "Password";
    const Common::istring privilege = request("Privilege");
    change.setPrivilege = !privilege.empty();
    if (change.setPrivilege)
    {
        const PrivilegeName* found = nullptr;
        for (const PrivilegeName& known : kPrivileges)
            if (privilege == known.name)
                found = &known;
        if (found == nullptr)
            return "Privilege";
        change.privilege = found->level;
    }
    const Common::istring enabled = request("Enabled");
    change.setEnabled = !enabled.empty();
    if (change.setEnabled && !Wd100Values::yesNo(enabled, change.enabled))
        return "Enabled";
    return nullptr;
}

// The checks against the user table: the ID within the channel's maximum,
// no name for the null user 1, not the last enabled administrator away.
const char* checkAgainst(const Common::list<Warden100::_USER>& users,
                         const Warden100::_USER_CHANGE& change)
{
    if (change.id > users.size())
        return "ID";
    if (change.id == 1 && change.setName)
        return "Name";
    return Warden100::lockoutCause(users, change);
}
} // namespace

void Wd100Commands::SetUser(NSP& nsp, Warden100& warden)
{
    Warden100::_USER_CHANGE change = Warden100::_USER_CHANGE();
    const char* bad = readChange(nsp.request(), change);
    unsigned char channel = 0;
    Common::list<Warden100::_USER> users;
    if (bad == nullptr)
    {
        if (!warden.lanChannel(channel) || !warden.users(channel, users))
        {
            Pages::NotAvailable(nsp);
            return;
        }
        bad = checkAgainst(users, change);
    }
    if (bad != nullptr)
    {
        nsp.response().Write(Wd100Answers::badValue(bad));
        return;
    }
    nsp.response().Write(Wd100Answers::outcome(warden.SetUser(channel, change)));
}
