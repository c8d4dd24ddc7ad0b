#include "collection/FSETReset.h"
#include "common/Conversion.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "fsetreset.nsp": "Perform" asks the firmware to reset its setup settings
// and answers the collection's result as the error code.
void Pages::FSETReset(NSP& nsp)
{
    Collection::FSETReset reset;
    if (!reset.supported())
    {
        NotAvailable(nsp);
        return;
    }
    if (nsp.request()("Command") == "Perform")
        nsp.response().Write("{\"ErrorCode\":" + Conversion::toString(reset.perform()) + "}");
}
