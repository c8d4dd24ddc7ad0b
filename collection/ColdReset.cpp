#include "collection/ColdReset.h"

#include "common/system/Clock.h"
#include "common/system/NVRAM.h"

using Common::System::NVRAM;

namespace Collection
{

namespace
{
const unsigned int kCommandSelect = 0xA6;
const unsigned short kCommandMode = 2;
const unsigned int kResetControl = 0x94;
const unsigned char kColdResetBit = 0x04;
const unsigned int kResetTrigger = 0xE7;
const unsigned char kTriggerValue = 0xB2;
const unsigned int kSetupReset = 0x8C;

// The control register reads back what was written at once on a working
// controller; the bound only keeps a broken one from hanging the host.
const unsigned int kReadBackAttempts = 10000;
// How long the firmware may take to accept a setup reset (polled every
// 10 ms on the seam's clock).
const unsigned long long kSetupResetWait = 30000000; // microseconds
const unsigned int kSetupResetPoll = 10000;          // microseconds

void waitForReadBack(unsigned int offset, unsigned char expected)
{
    unsigned char value = 0;
    for (unsigned int attempt = 0; attempt < kReadBackAttempts; ++attempt)
        if (!NVRAM::Read(offset, value) || value == expected)
            return;
}
} // namespace

void ColdReset::ArmThroughNVRAM()
{
    bool locked = NVRAM::LockSemaphore();
    NVRAM::Write(kCommandSelect, kCommandMode);
    unsigned char control = 0;
    NVRAM::Read(kResetControl, control);
    NVRAM::Write(kCommandSelect, kCommandMode);
    control |= kColdResetBit;
    NVRAM::Write(kResetControl, control);
    waitForReadBack(kResetControl, control);
    if (locked)
        NVRAM::UnlockSemaphore();
    NVRAM::Write(kResetTrigger, kTriggerValue);
}

void ColdReset::RequestSetupResetThroughNVRAM()
{
    NVRAM::Write(kCommandSelect, kCommandMode);
    NVRAM::Write(kSetupReset, static_cast<unsigned char>(0));
    using Common::System::Clock;
    unsigned long long start = Clock::elapsedMicroseconds();
    unsigned char value = 0;
    while (NVRAM::Read(kSetupReset, value) && value != 0 &&
           Clock::elapsedMicroseconds() - start < kSetupResetWait)
        Clock::sleepMicroseconds(kSetupResetPoll);
}

} // namespace Collection
