#include "collection/Warden100.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"
#include "extension/pages/Wd100Commands.h"

// "wd100.nsp": the management processor's settings over IPMI. "Query"
// answers every section; "SetNetwork", "SetUser", "SetServices" and
// "SetPowerPolicy" change what they are given. Without a controller every
// command answers {"ErrorCode":1}; an unknown or missing command answers
// {"ErrorCode":2,"Parameter":"Command"}.
void Pages::Wd100(NSP& nsp)
{
    Collection::Warden100 warden;
    if (!warden.isSupported())
    {
        NotAvailable(nsp);
        return;
    }
    const Common::istring command = nsp.request()("Command");
    if (command == "Query")
        Wd100Commands::Query(nsp, warden);
    else if (command == "SetNetwork")
        Wd100Commands::SetNetwork(nsp, warden);
    else if (command == "SetUser")
        Wd100Commands::SetUser(nsp, warden);
    else if (command == "SetServices")
        Wd100Commands::SetServices(nsp, warden);
    else if (command == "SetPowerPolicy")
        Wd100Commands::SetPowerPolicy(nsp, warden);
    else
        nsp.response().Write("{\"ErrorCode\":2,\"Parameter\":\"Command\"}");
}
