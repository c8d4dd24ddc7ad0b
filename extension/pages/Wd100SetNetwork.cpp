#include "collection/Warden100.h"
#include "extension/NSP.h"
#include "extension/pages/Wd100Answers.h"
#include "extension/pages/Wd100Commands.h"
#include "extension/pages/Wd100Values.h"

using Collection::Warden100;

namespace
{
const unsigned int kLastVLAN = 4094;

// The change the request asks for; null when it is fine, else the name of
// the first bad parameter.
const char* readChange(const NSPRequest& request, Warden100::_NETWORK_CHANGE& change)
{
    const Common::istring source = request("IPSource");
    change.ipSource = source.empty() ? 0 : source == "Static" ? 1 : source == "DHCP" ? 2 : 0xFF;
    if (change.ipSource == 0xFF)
        return "IPSource";
    const char* const names[] = {"IPAddress", "SubnetMask", "Gateway"};
    bool* const given[] = {&change.setAddress, &change.setMask, &change.setGateway};
    unsigned char* const values[] = {change.address, change.mask, change.gateway};
    for (unsigned int i = 0; i < 3; ++i)
    {
        Common::string text(request(names[i]));
        *given[i] = !text.empty();
        if (*given[i] && !Wd100Values::dottedQuad(text, values[i]))
            return names[i];
    }
    if (change.setMask && !Wd100Values::contiguousMask(change.mask))
        return "SubnetMask";
    Common::string vlan(request("VLANID"));
    unsigned int id = 0;
    change.setVLAN = !vlan.empty();
    if (change.setVLAN && !Wd100Values::decimal(vlan, kLastVLAN, id))
        return "VLANID";
    change.vlan = static_cast<unsigned short>(id);
    return nullptr;
}
} // namespace

void Wd100Commands::SetNetwork(NSP& nsp, Warden100& warden)
{
    Warden100::_NETWORK_CHANGE change = {};
    unsigned char channel = 0;
    if (readyToChange(nsp, warden, readChange(nsp.request(), change), channel))
        nsp.response().Write(Wd100Answers::outcome(warden.SetNetwork(channel, change)));
}
