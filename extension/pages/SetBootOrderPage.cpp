#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "setbootorder.nsp": boot order.
// Not available yet: answers {"ErrorCode":1} until the IPL table and boot order is in place;
// this file is then replaced by the page itself.
void Pages::SetBootOrder(NSP& nsp)
{
    NotAvailable(nsp);
}
