#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "system.nsp": file, folder and program services (Part 5.3).
// Not available yet: answers {"ErrorCode":1} until Common::Filesystem
// (Part 5.1), Application, TemporaryFile and CopyThread (Part 5.3) are in
// place; this file is then replaced by the page itself.
void Pages::System(NSP& nsp)
{
    NotAvailable(nsp);
}
