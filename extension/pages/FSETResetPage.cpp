#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "fsetreset.nsp": reset of the firmware setup.
// Not available yet: answers {"ErrorCode":1} until the firmware-setup reset is in place;
// this file is then replaced by the page itself.
void Pages::FSETReset(NSP& nsp)
{
    NotAvailable(nsp);
}
