#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "ostree.nsp": catalogue of installable operating systems.
// Not available yet: answers {"ErrorCode":1} until the operating-system catalogue is in place;
// this file is then replaced by the page itself.
void Pages::OSTree(NSP& nsp)
{
    NotAvailable(nsp);
}
