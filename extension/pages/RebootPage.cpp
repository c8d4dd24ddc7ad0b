#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "reboot.nsp": reboot and one-time boot target.
// Not available yet: answers {"ErrorCode":1} until the reboot collection is in place;
// this file is then replaced by the page itself.
void Pages::Reboot(NSP& nsp)
{
    NotAvailable(nsp);
}
