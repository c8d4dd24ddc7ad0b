#pragma once

#include "collection/ManagementResult.h"
#include "common/List.h"
#include "common/String.h"

namespace Collection
{

// The embedded management processor's settings ("wd100.nsp"), read and
// changed with standard IPMI requests: identity, the network of its LAN
// channel, its users, IPMI over LAN and serial over LAN, and the power
// restore policy.
//
// Readers answer false when the controller refused a request, answered too
// little or not at all; nothing they fill is then to be used. Changers send
// only what their change record marks as given and do not check values
// beyond their encoding: check them first.
class Warden100
{
public:
    // Channel privilege levels as the controller keeps them.
    static const unsigned char kCallback = 1;
    static const unsigned char kUser = 2;
    static const unsigned char kOperator = 3;
    static const unsigned char kAdministrator = 4;
    static const unsigned char kNoAccess = 0x0F;

    struct _IDENTITY
    {
        unsigned char deviceID;
        unsigned char deviceRevision;
        unsigned char firmwareMajor;
        unsigned char firmwareMinor; // two BCD digits
        unsigned char ipmiVersion;   // BCD: major in bits 3..0, minor in 7..4
        unsigned int manufacturerID; // 20 bits
        unsigned short productID;
    };
    struct _NETWORK
    {
        unsigned char ipSource; // 1 static, 2 DHCP, anything else another source
        unsigned char address[4];
        unsigned char mask[4];
        unsigned char gateway[4];
        unsigned char mac[6];
        unsigned short vlan; // 0: off
    };
    struct _USER
    {
        unsigned char id;
        Common::string name; // as the controller holds it: any bytes
        bool enabled;
        unsigned char privilege; // on the LAN channel
    };
    struct _SERVICES
    {
        bool lanEnabled;
        bool solEnabled;
        unsigned char bitRate; // non-volatile SOL bit rate code: 0 the port's default, 6..10
    };
    // 0 always off, 1 previous state, 2 always on, 3 unknown.
    typedef unsigned char PowerPolicy;

    struct _NETWORK_CHANGE
    {
        unsigned char ipSource; // 0: unchanged, else 1 static or 2 DHCP
        bool setAddress;
        unsigned char address[4];
        bool setMask;
        unsigned char mask[4];
        bool setGateway;
        unsigned char gateway[4];
        bool setVLAN;
        unsigned short vlan; // 0 off, 1..4094
    };
    struct _USER_CHANGE
    {
        unsigned char id;
        bool setName;
        Common::string name; // up to 16 bytes
        bool setPassword;
        Common::string password; // up to 20 bytes
        bool setPrivilege;
        unsigned char privilege;
        bool setEnabled;
        bool enabled;
    };
    struct _SERVICES_CHANGE
    {
        bool setLAN;
        bool lanEnabled;
        bool setSOL;
        bool solEnabled;
        bool setBitRate;
        unsigned char bitRate; // code 6..10
    };

    // True when the processor answers Get Device ID. The first call on a
    // machine without one takes several seconds (the IPMI driver is loaded
    // and waited for); only a true answer is kept, so a false one costs that
    // again on every call. Call it before anything else: every other method
    // on a machine without a controller pays those seconds per request.
    bool isSupported() const;

    bool identity(_IDENTITY& identity) const;
    // The first channel 0..11 whose medium is 802.3 LAN.
    bool lanChannel(unsigned char& channel) const;
    bool network(unsigned char channel, _NETWORK& network) const;
    // Every user ID from 1 to the channel's maximum, in order.
    bool users(unsigned char channel, Common::list<_USER>& users) const;
    bool services(unsigned char channel, _SERVICES& services) const;
    bool powerPolicy(PowerPolicy& policy) const;

    // The parameter ("Privilege" or "Enabled") through which `change` would
    // take away the last enabled administrator of `users`; null when it
    // would not.
    static const char* lockoutCause(const Common::list<_USER>& users, const _USER_CHANGE& change);

    // In the set-in-progress sequence of the LAN configuration.
    ManagementResult SetNetwork(unsigned char channel, const _NETWORK_CHANGE& change);
    // Name, password, privilege, then enabled: a new user is ready before it
    // is enabled.
    ManagementResult SetUser(unsigned char channel, const _USER_CHANGE& change);
    // The LAN channel's access mode, then serial over LAN in its
    // set-in-progress sequence.
    ManagementResult SetServices(unsigned char channel, const _SERVICES_CHANGE& change);
    ManagementResult SetPowerPolicy(PowerPolicy policy);
};

} // namespace Collection
