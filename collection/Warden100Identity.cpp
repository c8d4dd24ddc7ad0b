#include "collection/ManagementCommands.h"
#include "collection/ManagementExchange.h"
#include "collection/Warden100.h"

namespace Collection
{

namespace
{
// Completion code, device ID ... product ID (bytes 10 and 11).
const unsigned int kDeviceIDLength = 12;
} // namespace

bool Warden100::identity(_IDENTITY& identity) const
{
    ManagementExchange reply(ManagementCommands::kApplication, ManagementCommands::kGetDeviceID,
                             nullptr, 0);
    if (!reply.succeeded(kDeviceIDLength))
        return false;
    identity.deviceID = reply[1];
    identity.deviceRevision = reply[2] & 0x0F;
    identity.firmwareMajor = reply[3] & 0x7F;
    identity.firmwareMinor = reply[4];
    identity.ipmiVersion = reply[5];
    identity.manufacturerID = reply[7] | reply[8] << 8 | (reply[9] & 0x0F) << 16;
    identity.productID = static_cast<unsigned short>(reply[10] | reply[11] << 8);
    return true;
}

} // namespace Collection
