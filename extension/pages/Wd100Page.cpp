#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "wd100.nsp": the management processor's settings page. Its commands and
// answers are not defined yet; for now every
// request answers {"ErrorCode":1}. The name is recognised by the dispatcher
// all the same, so "wd100.nsp" is never served as a file.
void Pages::Wd100(NSP& nsp)
{
    NotAvailable(nsp);
}
