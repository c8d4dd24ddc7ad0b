#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "ostree.nsp": catalogue of installable operating systems (Part 2.4).
// Not available yet: answers {"ErrorCode":1} until the operating-system catalogue (Part 2.4) is in place;
// this file is then replaced by the page itself.
void Pages::OSTree(NSP& nsp)
{
    NotAvailable(nsp);
}
