#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "unattended.nsp": answer files for unattended installation (Part 4.1).
// Not available yet: answers {"ErrorCode":1} until the answer-file settings (Part 4.1) is in place;
// this file is then replaced by the page itself.
void Pages::Unattended(NSP& nsp)
{
    NotAvailable(nsp);
}
