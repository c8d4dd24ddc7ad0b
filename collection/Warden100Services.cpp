#include "collection/ConfigurationTransaction.h"
#include "collection/ManagementCommands.h"
#include "collection/ManagementExchange.h"
#include "collection/Warden100.h"

namespace Collection
{

namespace
{
// SOL configuration parameters.
const unsigned char kSOLEnable = 1;
const unsigned char kNonVolatileBitRate = 5;
const unsigned char kVolatileBitRate = 6;

// Channel access, byte 2: bits 7..6 choose the non-volatile (01b) or the
// volatile (10b) setting, bits 5..3 are the alerting and authentication
// switches, bits 2..0 the access mode.
const unsigned char kNonVolatile = 0x40;
const unsigned char kVolatile = 0x80;
const unsigned char kSwitches = 0x38;
const unsigned char kAccessMode = 0x07;
const unsigned char kDisabled = 0x00;
const unsigned char kAlwaysAvailable = 0x02;

bool readSOL(unsigned char channel, unsigned char parameter, unsigned char& value)
{
    const unsigned char request[] = {channel, parameter, 0, 0};
    ManagementExchange reply(ManagementCommands::kTransport, ManagementCommands::kGetSOLParameter,
                             request, sizeof request);
    // Completion code, parameter revision, the data byte.
    if (!reply.succeeded(3))
        return false;
    value = reply[2];
    return true;
}

// Get Channel Access of the non-volatile setting: completion code, the
// access byte (switches and mode), the privilege limit.
ManagementExchange nonVolatileAccess(unsigned char channel)
{
    const unsigned char request[] = {channel, kNonVolatile};
    return ManagementExchange(ManagementCommands::kApplication,
                              ManagementCommands::kGetChannelAccess, request, sizeof request);
}

// Sets the access mode in both the non-volatile and the active setting,
// keeping the switches as they are.
ManagementResult setLANAccess(unsigned char channel, bool enabled)
{
    ManagementExchange read = nonVolatileAccess(channel);
    if (!read.succeeded(3))
        return ManagementResult::refused("LANEnabled", read);
    const unsigned char mode = static_cast<unsigned char>((read[1] & kSwitches) |
                                                          (enabled ? kAlwaysAvailable : kDisabled));
    const unsigned char targets[] = {kNonVolatile, kVolatile};
    for (unsigned char target : targets)
    {
        // Byte 3 zero: the privilege limit stays.
        const unsigned char request[] = {channel, static_cast<unsigned char>(target | mode), 0};
        ManagementExchange set(ManagementCommands::kApplication,
                               ManagementCommands::kSetChannelAccess, request, sizeof request);
        if (!set.succeeded(1))
            return ManagementResult::refused("LANEnabled", set);
    }
    return ManagementResult::success();
}
} // namespace

bool Warden100::services(unsigned char channel, _SERVICES& services) const
{
    ManagementExchange access = nonVolatileAccess(channel);
    unsigned char enable = 0;
    unsigned char bitRate = 0;
    if (!access.succeeded(3) || !readSOL(channel, kSOLEnable, enable) ||
        !readSOL(channel, kNonVolatileBitRate, bitRate))
        return false;
    services.lanEnabled = (access[1] & kAccessMode) != kDisabled;
    services.solEnabled = (enable & 0x01) != 0;
    services.bitRate = bitRate & 0x0F;
    return true;
}

ManagementResult Warden100::SetServices(unsigned char channel, const _SERVICES_CHANGE& change)
{
    if (change.setLAN)
    {
        ManagementResult lan = setLANAccess(channel, change.lanEnabled);
        if (!lan.done)
            return lan;
    }
    if (!change.setSOL && !change.setBitRate)
        return ManagementResult::success();
    ConfigurationTransaction sol(ManagementCommands::kSetSOLParameter, channel);
    if (!sol.Begin())
        return sol.Finish();
    if (change.setSOL)
    {
        const unsigned char enable = change.solEnabled ? 1 : 0;
        sol.Write("SOLEnabled", kSOLEnable, &enable, 1);
    }
    if (change.setBitRate)
    {
        sol.Write("BaudRate", kNonVolatileBitRate, &change.bitRate, 1);
        sol.Write("BaudRate", kVolatileBitRate, &change.bitRate, 1);
    }
    return sol.Finish();
}

} // namespace Collection
