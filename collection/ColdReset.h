#pragma once

namespace Collection
{

// The management controller's NVRAM registers that restart the machine
// cold and reset the firmware setup. Both sequences need the NVRAM
// controller (Common::System::NVRAM::Supported()); failures are not
// reported, since the callers go on regardless.
namespace ColdReset
{
// Arms a power cycle for the next restart: control bit 0x04 at 0x94 under
// the semaphore, then 0xB2 at 0xE7.
void ArmThroughNVRAM();

// Asks the firmware to reset its setup settings at the next start (0 at
// 0x8C) and waits for the controller to take the request.
void RequestSetupResetThroughNVRAM();
} // namespace ColdReset

} // namespace Collection
