#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "fsetreset.nsp": reset of the firmware setup (Part 3.2).
// Not available yet: answers {"ErrorCode":1} until the firmware-setup reset (Part 3.2) is in place;
// this file is then replaced by the page itself.
void Pages::FSETReset(NSP& nsp)
{
    NotAvailable(nsp);
}
