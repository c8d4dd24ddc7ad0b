#include "collection/Warden100.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"
#include "extension/pages/Wd100Answers.h"
#include "extension/pages/Wd100Commands.h"

bool Wd100Commands::readyToChange(NSP& nsp, const Collection::Warden100& warden, const char* bad,
                                  unsigned char& channel)
{
    if (bad != nullptr)
        nsp.response().Write(Wd100Answers::badValue(bad));
    else if (!warden.lanChannel(channel))
        Pages::NotAvailable(nsp);
    else
        return true;
    return false;
}
