#pragma once

#include "platform/RomCallRegisters.h"

// Enters ROM code at `entry` with the registers of `block` and stores the
// registers the ROM left back into it (assembly, RomCall.S). Mode 1 pushes the
// flags and the code segment before a near call (the ROM returns with IRET),
// mode 2 pushes the code segment (far return), mode 3 raises the
// system-management interrupt through port 0xCD4 instead of calling.
//
// Needs I/O privilege level 3 and `entry` inside a mapping of the ROM area:
// anything else faults. Only the real backend calls it, after checking both.
extern "C" void rom_call(RomCallRegisters* block, void* entry, int mode);
