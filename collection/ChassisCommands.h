#pragma once

// The IPMI chassis commands: boot options, reset, status and the power
// restore policy.
namespace Collection
{
namespace ChassisCommands
{
const unsigned char kNetFn = 0x00;
const unsigned char kGetChassisStatus = 0x01;
const unsigned char kChassisControl = 0x02;
const unsigned char kSetPowerRestorePolicy = 0x06;
const unsigned char kSetBootOptions = 0x08;
const unsigned char kGetBootOptions = 0x09;

// Boot option parameter 5: the boot flags.
const unsigned char kBootFlags = 5;
// Bits 5..2 of boot-flag data byte 2: the boot device selector.
const unsigned char kSelectorBits = 0x3C;
} // namespace ChassisCommands
} // namespace Collection
