#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "hardware.nsp": system summary.
// Not available yet: answers {"ErrorCode":1} until the system summary is in place;
// this file is then replaced by the page itself.
void Pages::Hardware(NSP& nsp)
{
    NotAvailable(nsp);
}
