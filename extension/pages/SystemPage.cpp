#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "system.nsp": file, folder and program services.
// Not available yet: answers {"ErrorCode":1} until Common::Filesystem
//, Application, TemporaryFile and CopyThread are in
// place; this file is then replaced by the page itself.
void Pages::System(NSP& nsp)
{
    NotAvailable(nsp);
}
