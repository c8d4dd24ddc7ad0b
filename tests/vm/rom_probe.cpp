// Runs the platform layer's ROM calls against the firmware of the virtual
// server and prints what they found, one "key=value" line each, for the host
// to compare with its own reading of the same firmware image.
//
// The product maps the ROM area wherever the kernel places it and refuses a
// ROM without the maker's signature. Here the area is mapped at its physical
// address instead, so that firmware code with absolute addresses (SeaBIOS's
// 32-bit entry points) runs as it would on the machine, and the signature
// check is left out. It runs only inside the virtual server: it refuses to
// start unless the kernel command line names the virtual-server test.
#include "platform/RomAccess.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace
{
const unsigned long kRomStart = 0xA0000;
const unsigned long kRomLength = 0x100000 - kRomStart;
const unsigned long kPciService = 0x49435024; // "$PCI"

bool insideVirtualServer()
{
    std::FILE* cmdline = std::fopen("/proc/cmdline", "re");
    if (cmdline == nullptr)
        return false;
    char line[1024] = {};
    bool named = std::fgets(line, sizeof line, cmdline) != nullptr &&
                 std::strstr(line, "tidewell.case=") != nullptr;
    std::fclose(cmdline);
    return named;
}

unsigned long physical(void const* mapped)
{
    return static_cast<unsigned long>(reinterpret_cast<unsigned long>(mapped));
}

void printDirectories(rominfo_t& rom)
{
    unsigned long position = kRomStart;
    unsigned count = 0;
    while (void* entry = find_bios32_call(&rom, &position))
    {
        std::printf("directory.%u=0x%05lx entry=0x%05lx\n", count++, position, physical(entry));
        position += 16;
    }
    std::printf("directories=%u\n", count);
}

void printPciBios(rominfo_t& rom)
{
    void* entry = find_call(&rom, kPciService);
    std::printf("pci.entry=0x%05lx\n", physical(entry));
    std::printf("ev.entry=0x%05lx\n", physical(find_ev_call(&rom)));
    if (entry == nullptr)
        return;

    // The PCI BIOS's own presence call (function 01h).
    RomCallRegisters block;
    std::memset(&block, 0, sizeof block);
    block.eax = 0xB101;
    int status = do_rom_call(&rom, &block, entry, 2);
    char signature[5] = {};
    std::memcpy(signature, &block.edx, 4);
    std::printf("present.status=%d\n", status);
    std::printf("present.signature=%s\n", signature);
    std::printf("present.version=%04x\n", block.ebx & 0xFFFF);
    std::printf("present.last_bus=%u\n", block.ecx & 0xFF);
    std::printf("present.entry=0x%05x\n", block.edi);

    // The form the product's presence test uses (function 81h).
    std::memset(&block, 0, sizeof block);
    block.eax = 0xB181;
    std::printf("present81.status=%d\n", do_rom_call(&rom, &block, entry, 2));
    std::printf("pci_bios_present=%u\n", pci_bios_present(&rom, entry));
}
} // namespace

int main()
{
    if (!insideVirtualServer())
    {
        std::fprintf(stderr, "refused: runs only inside the virtual server\n");
        return 3;
    }
    rominfo_t rom;
    std::memset(&rom, 0, sizeof rom);
    rom.fd = ::open("/dev/mem", O_RDWR | O_CLOEXEC);
    if (rom.fd < 0)
    {
        std::perror("opening /dev/mem");
        return 1;
    }
    void* area = ::mmap(reinterpret_cast<void*>(kRomStart), kRomLength,
                        PROT_READ | PROT_WRITE | PROT_EXEC, MAP_SHARED | MAP_FIXED, rom.fd,
                        static_cast<off_t>(kRomStart));
    if (area == MAP_FAILED)
    {
        std::perror("mapping the ROM area at its physical address");
        return 1;
    }
    rom.base = static_cast<unsigned char*>(area);
    printDirectories(rom);
    printPciBios(rom);
    std::fflush(stdout);
    return romcall_fini(&rom) == 0 ? 0 : 1;
}
