#include "platform/RomAccess.h"

#include <cstdio>
#include <cstring>

namespace
{
const unsigned long kRomStart = 0xA0000;
const unsigned long kRomEnd = 0x100000;
const unsigned long kEnvironmentService = 0x53564524; // "$EVS"
const unsigned long kPciService = 0x49435024;         // "$PCI"

unsigned long read32(unsigned char const* at)
{
    unsigned int value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

// "_32_", a non-zero length (16-byte units) that stays inside the ROM area,
// bytes summing to 0 and revision 0.
bool isDirectoryHeader(unsigned char const* header, unsigned long physical)
{
    if (std::memcmp(header, "_32_", 4) != 0 || header[9] == 0 || header[8] != 0)
        return false;
    unsigned long length = header[9] * 16ul;
    if (length > kRomEnd - physical)
        return false;
    unsigned char sum = 0;
    for (unsigned long i = 0; i < length; ++i)
        sum = static_cast<unsigned char>(sum + header[i]);
    return sum == 0;
}

void* mapped(rominfo_t* rom, unsigned long physical)
{
    return rom->base + (physical - kRomStart);
}
} // namespace

extern "C"
{

    void* find_bios32_call(rominfo_t* rom, unsigned long* position)
    {
        if (rom == nullptr || rom->base == nullptr || position == nullptr)
            return nullptr;
        unsigned long at = *position < kRomStart ? kRomStart : *position;
        for (; at + 16 <= kRomEnd; at += 16)
        {
            unsigned char const* header = rom->base + (at - kRomStart);
            if (!isDirectoryHeader(header, at))
                continue;
            *position = at;
            unsigned long entry = read32(header + 4);
            // An entry the mapping does not hold ends the search.
            return entry >= kRomStart && entry < kRomEnd ? mapped(rom, entry) : nullptr;
        }
        *position = at;
        return nullptr;
    }

    void* find_call(rominfo_t* rom, unsigned long service)
    {
        if (rom == nullptr || rom->base == nullptr)
            return nullptr;
        unsigned long position = kRomStart;
        for (;;)
        {
            void* directory = find_bios32_call(rom, &position);
            if (directory == nullptr)
                return nullptr;
            RomCallRegisters block;
            std::memset(&block, 0, sizeof block);
            block.eax = static_cast<unsigned int>(service);
            do_rom_call(rom, &block, directory, 2);
            position += 16;
            if (block.al() != 0)
                continue;
            unsigned long entry = static_cast<unsigned long>(block.ebx) + block.edx;
            if (entry < kRomStart || entry >= kRomEnd)
            {
                std::fprintf(stderr, "rom_call returned invalid entry point %p\n",
                             reinterpret_cast<void*>(entry));
                return nullptr;
            }
            return mapped(rom, entry);
        }
    }

    void* find_ev_call(rominfo_t* rom)
    {
        return find_call(rom, kEnvironmentService);
    }

    void* find_pci_bios_call(rominfo_t* rom)
    {
        return find_call(rom, kPciService);
    }

    unsigned short pci_bios_present(rominfo_t* rom, void* entry)
    {
        RomCallRegisters block;
        std::memset(&block, 0, sizeof block);
        block.eax = 0xB181;
        if (do_rom_call(rom, &block, entry, 2) != 0)
            return 0;
        // rom_call loads ES from DS for every call, so this is non-zero after
        // any call that succeeded.
        return block.es;
    }

} // extern "C"
