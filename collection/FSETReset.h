#pragma once

namespace Collection
{

// Asks the firmware to reset its setup settings to their defaults at the
// next start.
class FSETReset
{
public:
    // Always true; the page's "not supported" answer exists for a machine
    // where it would not be.
    static bool supported() { return true; }

    // 0 when the request was handed over (through the IPMI clear-CMOS boot
    // option on a ROM without variables, else through the management
    // controller's NVRAM), 2 when the machine offers no way to do it.
    int perform();
};

} // namespace Collection
