#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "allstorage.nsp": storage inventory as XML.
// Not available yet: answers {"ErrorCode":1} until the storage inventory is in place;
// this file is then replaced by the page itself.
void Pages::AllStorage(NSP& nsp)
{
    NotAvailable(nsp);
}
