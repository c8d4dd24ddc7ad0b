#pragma once

#include "platform/RomCallRegisters.h"
#include "platform/RomInfo.h"

// The system ROM's call interfaces, reached through a mapping of the legacy
// ROM area. Functions return 0 for success and -1 for failure unless said
// otherwise; the fixed lines they print on standard error are part of their
// interface. Every hardware effect passes the platform's hardware seam.
extern "C"
{
    // romcall_init flags: what not to look up.
    enum
    {
        ROMCALL_NO_INT15 = 1,
        ROMCALL_NO_EV = 2,
        ROMCALL_NO_PCI = 4
    };

    // Maps physical 0xA0000..0xFFFFF (readable, writable, executable), checks
    // the "VELMAR" signature and looks up the entry points. Call romcall_fini
    // afterwards whatever the result: a failure can leave the mapping open.
    int romcall_init(rominfo_t* rom, unsigned long flags);
    // Unmaps, closes and zeroes every field. A block that romcall_init never
    // opened anything for is left alone.
    int romcall_fini(rominfo_t* rom);

    // Copies `count` bytes of the ROM area from `physical`; -1 (nothing
    // copied) when the range does not lie within 0xA0000..0xFFFFF.
    int rom_peek(rominfo_t* rom, unsigned long physical, unsigned char* out, int count);

    // Raises the I/O privilege and calls `entry` in `mode` (see rom_call).
    // The ROM's status: AH, negated when the carry flag is set; -1 without
    // I/O privilege.
    int do_rom_call(rominfo_t* rom, RomCallRegisters* block, void* entry, int mode);

    // The next BIOS32 service directory at or after physical *position (in
    // 16-byte steps): its mapped entry point, *position set to the header.
    // Null, *position where the scan stopped, when none is left or the
    // directory's entry point lies outside the ROM area.
    void* find_bios32_call(rominfo_t* rom, unsigned long* position);
    // The mapped entry of `service` from the first directory, in address
    // order, that offers it; null when none does.
    void* find_call(rominfo_t* rom, unsigned long service);
    void* find_ev_call(rominfo_t* rom);
    void* find_pci_bios_call(rominfo_t* rom);

    // Non-zero when the PCI BIOS at `entry` answers its presence call.
    unsigned short pci_bios_present(rominfo_t* rom, void* entry);

    // 0 when the mapped ROM carries "VELMAR" at physical 0xFFFEA, else -1.
    int check_for_velmar_ROM(rominfo_t* rom);
}
