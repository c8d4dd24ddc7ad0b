#include "collection/Reboot.h"
#include "common/Conversion.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"

namespace
{
const char kChoices[] =
    "{\"ErrorCode\":0,\"Target\":[{\"Name\":\"Default\",\"Value\":\"Default\"},{\"Name\":\"A:\","
    "\"Value\":\"A\"},{\"Name\":\"C:\",\"Value\":\"C\"},{\"Name\":\"CD\",\"Value\":\"CD\"},{"
    "\"Name\":\"PXE\",\"Value\":\"PXE\"},{\"Name\":\"FSET\",\"Value\":\"FSET\"}],\"ColdBoot\":[{"
    "\"Name\":\"Yes\",\"Value\":\"Yes\"},{\"Name\":\"No\",\"Value\":\"No\"}]}";

// Records the target named by the page value; false for a name it lacks.
bool chooseTarget(Collection::Reboot& reboot, const Common::istring& target)
{
    if (target == "Default")
        return true;
    if (target == "A")
        reboot.TargetA();
    else if (target == "C")
        reboot.TargetC();
    else if (target == "CD")
        reboot.TargetCD();
    else if (target == "PXE")
        reboot.TargetPXE();
    else if (target == "FSET")
        reboot.TargetFSET();
    else
        return false;
    return true;
}
} // namespace

// "reboot.nsp": "Query" lists the targets and cold-boot choices; "Perform"
// restarts the machine with the chosen "Target" and "ColdBoot". An invalid
// value only changes the error code: the machine restarts all the same. The
// answer is written only when the restart failed, since otherwise no one is
// left to read it.
void Pages::Reboot(NSP& nsp)
{
    Collection::Reboot reboot;
    if (!reboot.supported())
    {
        NotAvailable(nsp);
        return;
    }
    NSPRequest& request = nsp.request();
    Common::istring command = request("Command");
    if (command == "Query")
        nsp.response().Write(kChoices);
    else if (command == "Perform")
    {
        Common::istring target = request("Target");
        Common::istring coldBoot = request("ColdBoot");
        int errorCode = 0;
        if (!chooseTarget(reboot, target))
            errorCode = 2;
        if (coldBoot == "Yes")
            reboot.ColdBoot(true);
        else if (coldBoot != "No")
            errorCode = 3;
        reboot.Perform();
        nsp.response().Write("{\"ErrorCode\":" + Conversion::toString(errorCode) +
                             ",\"Target\":\"" + Common::string(target) + "\",\"ColdBoot\":\"" +
                             Common::string(coldBoot) + "\"}");
    }
}
