#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "setbootorder.nsp": boot order (Part 3.1).
// Not available yet: answers {"ErrorCode":1} until the IPL table and boot order (Part 3.1) is in place;
// this file is then replaced by the page itself.
void Pages::SetBootOrder(NSP& nsp)
{
    NotAvailable(nsp);
}
