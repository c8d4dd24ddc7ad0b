#include "platform/RomAccess.h"

#include "platform/Hardware.h"

#include <cstdio>
#include <cstring>

namespace
{
const unsigned long kRomStart = 0xA0000;
const unsigned long kRomEnd = 0x100000;
const unsigned kRomLength = kRomEnd - kRomStart;
const unsigned long kSignature = 0xFFFEA;
const unsigned long kInterrupt15Vector = 4 * 0x15;
} // namespace

extern "C"
{

    int romcall_init(rominfo_t* rom, unsigned long flags)
    {
        if (rom == nullptr)
            return -1;
        Common::Platform::Hardware& hardware = Common::Platform::hardware();
        rom->fd = hardware.openMemory(true);
        if (rom->fd < 0)
        {
            std::perror("opening /dev/mem");
            return -1;
        }
        rom->base = static_cast<unsigned char*>(
            hardware.mapMemory(rom->fd, kRomStart, kRomLength, true, true));
        if (rom->base == nullptr)
        {
            std::perror("mmaping /dev/mem");
            return -1;
        }
        if (check_for_velmar_ROM(rom) != 0)
        {
            std::fputs("Not a ZR Corvane Server!\n", stderr);
            return -1;
        }
        unsigned char vector[4];
        if ((flags & ROMCALL_NO_INT15) == 0 &&
            hardware.readMemory(rom->fd, kInterrupt15Vector, vector, sizeof vector))
        {
            unsigned long handler =
                (vector[2] | vector[3] << 8) * 16ul + (vector[0] | vector[1] << 8);
            // A handler outside the mapping could not be entered.
            if (handler >= kRomStart && handler < kRomEnd)
                rom->int15_entry = rom->base + (handler - kRomStart);
        }
        if ((flags & ROMCALL_NO_EV) == 0)
            rom->ev_entry = find_ev_call(rom);
        if ((flags & ROMCALL_NO_PCI) == 0)
        {
            rom->pci_entry = find_pci_bios_call(rom);
            if (rom->pci_entry != nullptr)
                rom->pci_present = pci_bios_present(rom, rom->pci_entry);
        }
        return 0;
    }

    int romcall_fini(rominfo_t* rom)
    {
        if (rom == nullptr)
            return -1;
        Common::Platform::Hardware& hardware = Common::Platform::hardware();
        if (rom->base != nullptr && !hardware.unmapMemory(rom->base, kRomLength))
        {
            std::perror("munmaping /dev/mem");
            return -1;
        }
        // A zero-filled block never opened a descriptor; one whose open
        // failed holds -1.
        bool opened = rom->fd > 0 || (rom->fd == 0 && rom->base != nullptr);
        if (opened && !hardware.closeMemory(rom->fd))
        {
            std::perror("closing /dev/mem");
            return -1;
        }
        std::memset(rom, 0, sizeof *rom);
        return 0;
    }

    int rom_peek(rominfo_t* rom, unsigned long physical, unsigned char* out, int count)
    {
        if (rom == nullptr || rom->base == nullptr || count < 0 || (out == nullptr && count > 0))
            return -1;
        if (physical < kRomStart || physical >= kRomEnd ||
            static_cast<unsigned long>(count) > kRomEnd - physical)
            return -1;
        std::memcpy(out, rom->base + (physical - kRomStart), static_cast<unsigned>(count));
        return 0;
    }

    int do_rom_call(rominfo_t*, RomCallRegisters* block, void* entry, int mode)
    {
        if (block == nullptr)
            return -1;
        Common::Platform::Hardware& hardware = Common::Platform::hardware();
        if (!hardware.raiseIOPrivilege())
        {
            std::perror("iopl(3)");
            return -1;
        }
        hardware.callROM(*block, entry, mode);
        return (block->eflags & 1u) != 0 ? -block->ah() : block->ah();
    }

    int check_for_velmar_ROM(rominfo_t* rom)
    {
        unsigned char found[6];
        if (rom_peek(rom, kSignature, found, sizeof found) != 0)
            return -1;
        return std::memcmp(found, "VELMAR", sizeof found) == 0 ? 0 : -1;
    }

} // extern "C"
