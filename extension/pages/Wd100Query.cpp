#include "collection/Warden100.h"
#include "common/Conversion.h"
#include "common/Format.h"
#include "common/JSONText.h"
#include "extension/NSP.h"
#include "extension/pages/Wd100Commands.h"

using Collection::Warden100;

namespace
{
Common::string number(unsigned int value)
{
    return Conversion::toString(value);
}

Common::string quoted(const Common::string& text)
{
    return "\"" + text + "\"";
}

Common::string address(const unsigned char bytes[4])
{
    return Common::formatShort("%u.%u.%u.%u", bytes[0], bytes[1], bytes[2], bytes[3]);
}

Common::string yesNo(bool value)
{
    return value ? "\"Yes\"" : "\"No\"";
}

const char* privilegeName(unsigned char privilege)
{
    switch (privilege)
    {
    case Warden100::kUser:
        return "User";
    case Warden100::kOperator:
        return "Operator";
    case Warden100::kAdministrator:
        return "Administrator";
    default:
        return "NoAccess";
    }
}

// Bit rate codes 6..10 in bit/s; 0 for the serial port's default (and for
// a code without a rate).
unsigned int baudRate(unsigned char code)
{
    static const unsigned int kRates[] = {9600, 19200, 38400, 57600, 115200};
    return code >= 6 && code <= 10 ? kRates[code - 6] : 0;
}

const char* policyName(Warden100::PowerPolicy policy)
{
    static const char* const kNames[] = {"AlwaysOff", "Previous", "AlwaysOn", "Unknown"};
    return kNames[policy & 0x03];
}

Common::string identitySection(const Warden100::_IDENTITY& identity)
{
    return "\"Identity\":{\"DeviceID\":" + number(identity.deviceID) +
           ",\"DeviceRevision\":" + number(identity.deviceRevision) + ",\"FirmwareRevision\":" +
           quoted(Common::formatShort("%u.%02X", identity.firmwareMajor, identity.firmwareMinor)) +
           ",\"IPMIVersion\":" +
           quoted(Common::formatShort("%u.%u", identity.ipmiVersion & 0x0F,
                                      identity.ipmiVersion >> 4)) +
           ",\"ManufacturerID\":" + number(identity.manufacturerID) +
           ",\"ProductID\":" + number(identity.productID) + "}";
}

Common::string networkSection(unsigned char channel, const Warden100::_NETWORK& network)
{
    const char* source = network.ipSource == 1   ? "Static"
                         : network.ipSource == 2 ? "DHCP"
                                                 : "Other";
    const unsigned char* mac = network.mac;
    return "\"Network\":{\"Channel\":" + number(channel) + ",\"IPSource\":" + quoted(source) +
           ",\"IPAddress\":" + quoted(address(network.address)) +
           ",\"SubnetMask\":" + quoted(address(network.mask)) +
           ",\"Gateway\":" + quoted(address(network.gateway)) + ",\"MACAddress\":" +
           quoted(Common::formatShort("%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2],
                                      mac[3], mac[4], mac[5])) +
           ",\"VLANID\":" + number(network.vlan) + "}";
}

Common::string usersSection(const Common::list<Warden100::_USER>& users)
{
    Common::string items;
    for (Common::list<Warden100::_USER>::const_iterator it = users.begin(); it != users.end(); ++it)
    {
        if (!items.empty())
            items += ",";
        items += "{\"ID\":" + number(it->id) +
                 ",\"Name\":" + quoted(Conversion::toJSONText(it->name)) +
                 ",\"Enabled\":" + yesNo(it->enabled) +
                 ",\"Privilege\":" + quoted(privilegeName(it->privilege)) + "}";
    }
    return "\"Users\":[" + items + "]";
}

Common::string servicesSection(const Warden100::_SERVICES& services)
{
    return "\"Services\":{\"LANEnabled\":" + yesNo(services.lanEnabled) +
           ",\"SOLEnabled\":" + yesNo(services.solEnabled) +
           ",\"BaudRate\":" + number(baudRate(services.bitRate)) + "}";
}

// Appends a section read, or its name to the unsupported ones.
void add(bool read, const Common::string& section, const char* name, Common::string& answer,
         Common::string& unsupported)
{
    if (read)
    {
        answer += "," + section;
        return;
    }
    if (!unsupported.empty())
        unsupported += ",";
    unsupported += quoted(name);
}
} // namespace

// Every section the controller answers in full; the others are named in
// "Unsupported".
void Wd100Commands::Query(NSP& nsp, Warden100& warden)
{
    Common::string answer = "{\"ErrorCode\":0";
    Common::string unsupported;

    Warden100::_IDENTITY identity;
    bool read = warden.identity(identity);
    add(read, read ? identitySection(identity) : "", "Identity", answer, unsupported);

    unsigned char channel = 0;
    bool lan = warden.lanChannel(channel);
    Warden100::_NETWORK network;
    read = lan && warden.network(channel, network);
    add(read, read ? networkSection(channel, network) : "", "Network", answer, unsupported);

    Common::list<Warden100::_USER> users;
    read = lan && warden.users(channel, users);
    add(read, read ? usersSection(users) : "", "Users", answer, unsupported);

    Warden100::_SERVICES services;
    read = lan && warden.services(channel, services);
    add(read, read ? servicesSection(services) : "", "Services", answer, unsupported);

    Warden100::PowerPolicy policy = 0;
    read = warden.powerPolicy(policy);
    add(read, read ? "\"PowerPolicy\":" + quoted(policyName(policy)) : "", "PowerPolicy", answer,
        unsupported);

    nsp.response().Write(answer + ",\"Unsupported\":[" + unsupported + "]}");
}
