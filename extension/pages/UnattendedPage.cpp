#include "collection/Unattend.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "unattended.nsp": writes the answer file for "Platform" to "Filename".
// ReturnCode is "0" when the file was written and "1" when it could not be
// opened; ErrorCode is always 0. "Command" is not consulted.
void Pages::Unattended(NSP& nsp)
{
    char written[] = {Collection::Unattend::WriteFromRequest(nsp.request()), '\0'};
    nsp.response().Write(Common::string("{\"ErrorCode\":0,\"ReturnCode\":\"") + written + "\"}");
}
