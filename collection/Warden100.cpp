#include "collection/Warden100.h"

#include "collection/ManagementCommands.h"
#include "collection/ManagementExchange.h"
#include "common/system/IPMI.h"

namespace Collection
{

namespace
{
// Channels 0Ch..0Fh are reserved or stand for "this channel" and the system
// interface: never a LAN channel's number.
const unsigned char kLastChannel = 0x0B;
const unsigned char kMedium8023LAN = 0x04;
} // namespace

bool Warden100::isSupported() const
{
    return Common::IPMI::supported();
}

bool Warden100::lanChannel(unsigned char& channel) const
{
    for (unsigned char candidate = 0; candidate <= kLastChannel; ++candidate)
    {
        ManagementExchange info(ManagementCommands::kApplication,
                                ManagementCommands::kGetChannelInfo, &candidate, 1);
        if (info.succeeded(3) && (info[2] & 0x7F) == kMedium8023LAN)
        {
            channel = candidate;
            return true;
        }
    }
    return false;
}

} // namespace Collection
