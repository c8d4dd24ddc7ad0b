#pragma once

// The IPMI application and transport commands of the management
// processor's settings (the chassis commands are in ChassisCommands.h).
namespace Collection
{
namespace ManagementCommands
{
const unsigned char kApplication = 0x06;
const unsigned char kTransport = 0x0C;

// Application.
const unsigned char kGetDeviceID = 0x01;
const unsigned char kSetChannelAccess = 0x40;
const unsigned char kGetChannelAccess = 0x41;
const unsigned char kGetChannelInfo = 0x42;
const unsigned char kSetUserAccess = 0x43;
const unsigned char kGetUserAccess = 0x44;
const unsigned char kSetUserName = 0x45;
const unsigned char kGetUserName = 0x46;
const unsigned char kSetUserPassword = 0x47;

// Transport.
const unsigned char kSetLANParameter = 0x01;
const unsigned char kGetLANParameter = 0x02;
const unsigned char kSetSOLParameter = 0x21;
const unsigned char kGetSOLParameter = 0x22;

// Parameter 0 of the LAN and SOL configurations, and its values.
const unsigned char kSetInProgressParameter = 0;
const unsigned char kSetComplete = 0;
const unsigned char kSetInProgress = 1;
const unsigned char kCommitWrite = 2;
} // namespace ManagementCommands
} // namespace Collection
