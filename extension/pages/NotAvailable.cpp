#include "extension/NSP.h"
#include "extension/pages/Pages.h"

void Pages::NotAvailable(NSP& nsp)
{
    nsp.response().Write("{\"ErrorCode\":1}");
}
