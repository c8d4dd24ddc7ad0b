#include "collection/Warden100.h"
#include "extension/NSP.h"
#include "extension/pages/Wd100Answers.h"
#include "extension/pages/Wd100Commands.h"

void Wd100Commands::SetPowerPolicy(NSP& nsp, Collection::Warden100& warden)
{
    static const char* const kPolicies[] = {"AlwaysOff", "Previous", "AlwaysOn"};
    const Common::istring policy = nsp.request()("Policy");
    if (policy.empty())
    {
        nsp.response().Write(Wd100Answers::outcome(Collection::ManagementResult::success()));
        return;
    }
    for (unsigned char code = 0; code < 3; ++code)
        if (policy == kPolicies[code])
        {
            nsp.response().Write(Wd100Answers::outcome(warden.SetPowerPolicy(code)));
            return;
        }
    nsp.response().Write(Wd100Answers::badValue("Policy"));
}
