#pragma once

#include "common/system/IPMI.h"

namespace Collection
{

// Restarts the server, optionally choosing the device of the next boot only
// and a cold (power) reset first. Built per request: the setters record the
// choice and Perform carries it out and restarts.
//
// Perform restarts the machine for real: it returns only when the reboot
// call fails.
class Reboot
{
public:
    Reboot();

    // Always true; the page's "not supported" answer exists for a machine
    // where it would not be.
    static bool supported() { return true; }

    // The device of the next boot. Each replaces the target before it,
    // except that TargetA only adds its selector bits to the IPMI request.
    void TargetA();
    void TargetC();
    void TargetCD();
    void TargetPXE();
    void TargetFSET();
    void ColdBoot(const bool& cold);

    // Records the target (ROM variable "RXTBT1", or a one-time IPMI boot
    // override where the ROM has no variables), resets the machine cold if
    // asked (through the management controller's NVRAM registers, or an IPMI
    // chassis hard reset without them, then two seconds' wait), then makes
    // the reboot call. Failures on the way are not reported: the restart
    // happens all the same. Returns the reboot call's result when it fails.
    int Perform();

private:
    void target(unsigned short code, unsigned char selector);
    void recordTarget();
    void resetCold();

    unsigned short m_targetCode;
    // Set System Boot Options request: parameter 5 (boot flags), flags valid
    // for the next boot only, device selector in bits 5..2 of data byte 2.
    Common::IPMI::_SET_BOOT_FLAGS m_bootFlags;
    bool m_targetSet;
    bool m_coldBoot;
};

} // namespace Collection
