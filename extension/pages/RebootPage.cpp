#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "reboot.nsp": reboot and one-time boot target (Part 3.2).
// Not available yet: answers {"ErrorCode":1} until the reboot collection (Part 3.2) is in place;
// this file is then replaced by the page itself.
void Pages::Reboot(NSP& nsp)
{
    NotAvailable(nsp);
}
