#include "collection/ConfigurationTransaction.h"
#include "collection/ManagementCommands.h"
#include "collection/ManagementExchange.h"
#include "collection/Warden100.h"

namespace Collection
{

namespace
{
// LAN configuration parameters.
const unsigned char kAddress = 3;
const unsigned char kSource = 4;
const unsigned char kMAC = 5;
const unsigned char kMask = 6;
const unsigned char kGateway = 12;
const unsigned char kVLAN = 20;
const unsigned char kVLANEnabled = 0x80;
const unsigned char kParameterNotSupported = 0x80;

// Reads `length` data bytes of a parameter into `data`. A short reply fails.
bool readParameter(unsigned char channel, unsigned char parameter, unsigned char* data,
                   unsigned int length)
{
    const unsigned char request[] = {channel, parameter, 0, 0};
    ManagementExchange reply(ManagementCommands::kTransport, ManagementCommands::kGetLANParameter,
                             request, sizeof request);
    // Completion code and parameter revision before the data.
    if (!reply.succeeded(2 + length))
        return false;
    for (unsigned int i = 0; i < length; ++i)
        data[i] = reply[2 + i];
    return true;
}
} // namespace

bool Warden100::network(unsigned char channel, _NETWORK& network) const
{
    unsigned char source = 0;
    if (!readParameter(channel, kSource, &source, 1) ||
        !readParameter(channel, kAddress, network.address, 4) ||
        !readParameter(channel, kMask, network.mask, 4) ||
        !readParameter(channel, kGateway, network.gateway, 4) ||
        !readParameter(channel, kMAC, network.mac, 6))
        return false;
    network.ipSource = source & 0x0F;

    // A controller without VLAN support (parameter not supported) runs
    // without a VLAN; any other failure leaves the network unread.
    const unsigned char request[] = {channel, kVLAN, 0, 0};
    ManagementExchange vlan(ManagementCommands::kTransport, ManagementCommands::kGetLANParameter,
                            request, sizeof request);
    if (vlan.answered() && vlan.completionCode() == kParameterNotSupported)
        network.vlan = 0;
    else if (vlan.succeeded(4))
        network.vlan = (vlan[3] & kVLANEnabled)
                           ? static_cast<unsigned short>(vlan[2] | (vlan[3] & 0x0F) << 8)
                           : 0;
    else
        return false;
    return true;
}

ManagementResult Warden100::SetNetwork(unsigned char channel, const _NETWORK_CHANGE& change)
{
    if (change.ipSource == 0 && !change.setAddress && !change.setMask && !change.setGateway &&
        !change.setVLAN)
        return ManagementResult::success();
    ConfigurationTransaction lan(ManagementCommands::kSetLANParameter, channel);
    if (!lan.Begin())
        return lan.Finish();
    if (change.ipSource != 0)
        lan.Write("IPSource", kSource, &change.ipSource, 1);
    if (change.setAddress)
        lan.Write("IPAddress", kAddress, change.address, 4);
    if (change.setMask)
        lan.Write("SubnetMask", kMask, change.mask, 4);
    if (change.setGateway)
        lan.Write("Gateway", kGateway, change.gateway, 4);
    if (change.setVLAN)
    {
        const unsigned char vlan[] = {
            static_cast<unsigned char>(change.vlan & 0xFF),
            static_cast<unsigned char>(change.vlan == 0 ? 0 : kVLANEnabled | (change.vlan >> 8))};
        lan.Write("VLANID", kVLAN, vlan, sizeof vlan);
    }
    return lan.Finish();
}

} // namespace Collection
