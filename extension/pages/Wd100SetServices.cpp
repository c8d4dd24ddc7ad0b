#include "collection/Warden100.h"
#include "extension/NSP.h"
#include "extension/pages/Wd100Answers.h"
#include "extension/pages/Wd100Commands.h"
#include "extension/pages/Wd100Values.h"

using Collection::Warden100;

namespace
{
// The SOL bit rate codes of the rates the page offers.
struct RateCode
{
    const char* rate;
    unsigned char code;
};
const RateCode kRates[] = {{"9600", 6}, {"19200", 7}, {"38400", 8}, {"57600", 9}, {"115200", 10}};

// Null when the request is fine, else the name of the first bad parameter.
const char* readChange(const NSPRequest& request, Warden100::_SERVICES_CHANGE& change)
{
    const Common::istring lan = request("LANEnabled");
    change.setLAN = !lan.empty();
    if (change.setLAN && !Wd100Values::yesNo(lan, change.lanEnabled))
        return "LANEnabled";
    const Common::istring sol = request("SOLEnabled");
    change.setSOL = !sol.empty();
    if (change.setSOL && !Wd100Values::yesNo(sol, change.solEnabled))
        return "SOLEnabled";
    const Common::istring rate = request("BaudRate");
    change.setBitRate = !rate.empty();
    if (!change.setBitRate)
        return nullptr;
    for (const RateCode& known : kRates)
        if (rate == known.rate)
        {
            change.bitRate = known.code;
            return nullptr;
        }
    return "BaudRate";
}
} // namespace

void Wd100Commands::SetServices(NSP& nsp, Warden100& warden)
{
    Warden100::_SERVICES_CHANGE change = {};
    unsigned char channel = 0;
    if (readyToChange(nsp, warden, readChange(nsp.request(), change), channel))
        nsp.response().Write(Wd100Answers::outcome(warden.SetServices(channel, change)));
}
