#include "collection/Warden100.h"
#include "common/system/EnvironmentVariable.h"
#include "common/system/SMBios.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"

namespace
{
const char* yesNo(bool yes)
{
    return yes ? "Yes" : "No";
}

// The management processor is probed only where the ROM has no environment
// variables: with them the answer is "No" without asking.
// Beware: a probe may load the IPMI kernel modules, create the device node
// and wait for the driver: seconds on a machine without a controller, and
// again on each request there (only a "yes" is kept).
bool managementProcessorSupport(bool environmentVariables)
{
    return !environmentVariables && Collection::Warden100().isSupported();
}
} // namespace

// "hardware.nsp": Command=Query answers the system summary from SMBIOS.
// Without SMBIOS the answer is {"ErrorCode":1} whatever the command; another
// command answers nothing. Values are inserted as they are, not escaped.
void Pages::Hardware(NSP& nsp)
{
    const Common::System::SMBios smbios;
    if (!smbios.supported())
    {
        nsp.response().Write("{\"ErrorCode\":1}");
        return;
    }
    if (nsp.request()("Command") != "Query")
        return;

    const bool environmentVariables = Common::EnvironmentVariable::supported();
    const bool managementProcessor = managementProcessorSupport(environmentVariables);
    nsp.response().Write(Common::string("{\"ErrorCode\":0,\"EVSupport\":\"") +
                         yesNo(environmentVariables) + "\",\"WD100Support\":\"" +
                         yesNo(managementProcessor) + "\",\"ROMName\":\"" + smbios.GetROMName() +
                         "\",\"ROMDate\":\"" + smbios.GetROMDate() + "\",\"RedundantROMDate\":\"" +
                         smbios.GetRedundantROMDate() + "\",\"ProductName\":\"" +
                         smbios.GetProductName() + "\",\"ServerID\":\"" + smbios.GetServerID() +
                         "\",\"SystemID\":\"" + smbios.GetSystemID() + "\",\"SerialNumber\":\"" +
                         smbios.GetSerialNumber() + "\",\"AssetTag\":\"" + smbios.GetAssetTag() +
                         "\",\"TotalRAM\":\"" + smbios.GetTotalRAM() + "\"}");
}
