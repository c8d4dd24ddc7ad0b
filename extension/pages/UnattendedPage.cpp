#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "unattended.nsp": answer files for unattended installation.
// Not available yet: answers {"ErrorCode":1} until the answer-file settings is in place;
// this file is then replaced by the page itself.
void Pages::Unattended(NSP& nsp)
{
    NotAvailable(nsp);
}
