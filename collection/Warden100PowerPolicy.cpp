#include "collection/ChassisCommands.h"
#include "collection/ManagementExchange.h"
#include "collection/Warden100.h"

namespace Collection
{

bool Warden100::powerPolicy(PowerPolicy& policy) const
{
    // Completion code, current power state, last power event, misc state.
    ManagementExchange status(ChassisCommands::kNetFn, ChassisCommands::kGetChassisStatus, nullptr,
                              0);
    if (!status.succeeded(4))
        return false;
    policy = (status[1] >> 5) & 0x03;
    return true;
}

ManagementResult Warden100::SetPowerPolicy(PowerPolicy policy)
{
    const unsigned char request = policy & 0x07;
    ManagementExchange set(ChassisCommands::kNetFn, ChassisCommands::kSetPowerRestorePolicy,
                           &request, 1);
    return set.succeeded(1) ? ManagementResult::success()
                            : ManagementResult::refused("Policy", set);
}

} // namespace Collection
