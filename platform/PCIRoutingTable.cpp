#include "platform/Hardware.h"
#include "platform/ProcPCI.h"
#include "platform/RomAccess.h"

#include <cstdio>
#include <cstring>

namespace
{
const int kRomTableCapacity = 64; // 1024 bytes

// The ROM's routing table, fetched at most once per process.
_PCIIRQROUTENTRY internal_table[kRomTableCapacity];
// 0: not fetched yet, -1: the fetch failed, n > 0: entries.
int internal_table_size = 0;

// The ROM context the fetch sets up once and keeps for the process.
rominfo_t rom_context;
bool rom_initialized = false;

// The PCI BIOS "get IRQ routing options" request block: the buffer's size
// (the ROM sets it to the table's), then its offset and segment.
struct __attribute__((packed)) RouteBufferRequest
{
    unsigned short size;
    unsigned int offset;
    unsigned short segment;
};

int pci_irq_route_table_from_rom_internal()
{
    if (rom_context.pci_entry == nullptr && rom_context.pci_present == 0 && !rom_initialized)
    {
        rom_initialized = true;
        if (romcall_init(&rom_context, ROMCALL_NO_EV) != 0)
        {
            romcall_fini(&rom_context);
            return -1;
        }
    }
    if (rom_context.pci_entry == nullptr || rom_context.pci_present == 0)
        return -1;
    RouteBufferRequest request = {
        sizeof internal_table,
        static_cast<unsigned int>(reinterpret_cast<unsigned long>(internal_table)),
        rom_context.pci_present};
    RomCallRegisters block;
    std::memset(&block, 0, sizeof block);
    block.eax = 0xB18E;
    block.edi = static_cast<unsigned int>(reinterpret_cast<unsigned long>(&request));
    if (do_rom_call(&rom_context, &block, rom_context.pci_entry, 2) != 0)
        return -1;
    // A ROM that claims more than the buffer holds filled the buffer at most.
    unsigned int entries = request.size / sizeof(_PCIIRQROUTENTRY);
    internal_table_size =
        entries < kRomTableCapacity ? static_cast<int>(entries) : kRomTableCapacity;
    return 0;
}

void storeProcLine(char const* line, _PCIIRQROUTENTRY& entry)
{
    unsigned int bus = 0, device = 0, ignored = 0, link = 0, bitmap = 0;
    int slot = 0;
    std::sscanf(line, "%2x %2x %2x %2x %4x%2d\n", &bus, &device, &ignored, &link, &bitmap, &slot);
    entry.bus = static_cast<unsigned char>(bus);
    entry.devfn = static_cast<unsigned char>(device * 8);
    entry.pin[0].link = static_cast<unsigned char>(link);
    entry.pin[0].bitmap = static_cast<unsigned short>(bitmap);
    entry.slot = static_cast<unsigned char>(slot);
}
} // namespace

extern "C"
{

    int pci_irq_route_table(_PCIIRQROUTENTRY* buffer, int* count)
    {
        if (count == nullptr)
            return -1;
        int capacity = *count;
        if (pci_irq_route_table_from_proc(buffer, count) == 0 && *count >= 1)
            return add_to_irq_route_table(buffer, capacity, count);
        *count = capacity;
        int status = copy_irq_route_table_from_rom_internal(buffer, count);
        if (status < 0)
            return status;
        return add_to_irq_route_table(buffer, capacity, count);
    }

    int pci_irq_route_table_from_proc(_PCIIRQROUTENTRY* buffer, int* count)
    {
        if (count == nullptr)
            return -1;
        if (buffer != nullptr && *count > 0)
            std::memset(buffer, 0, sizeof(_PCIIRQROUTENTRY) * static_cast<unsigned>(*count));
        Common::string text;
        if (!Common::Platform::hardware().readFile("/proc/vlmpci", text))
            return -1;
        return pci_irq_route_table_from_text(text.c_str(), text.size(), buffer, count);
    }

    int pci_irq_route_table_from_text(char const* text, unsigned length, _PCIIRQROUTENTRY* buffer,
                                      int* count)
    {
        if (count == nullptr || (text == nullptr && length > 0))
            return -1;
        int capacity = *count > 0 ? *count : 0;
        if (buffer != nullptr)
            std::memset(buffer, 0, sizeof(_PCIIRQROUTENTRY) * static_cast<unsigned>(capacity));
        *count = 0;
        if (length == 0)
            return 0;
        // Read as a file, line by line into the same 80-byte buffer the
        // kernel's file was always read with: a longer line counts as two.
        std::FILE* file = ::fmemopen(const_cast<char*>(text), length, "r");
        if (file == nullptr)
            return -1;

        // The entry lines follow the line with the first "(" and one more line.
        int c;
        do
            c = std::fgetc(file);
        while (c != EOF && c != '(');
        char line[80];
        for (int skipped = 0; skipped < 2; ++skipped)
            if (std::fgets(line, sizeof line, file) == nullptr)
                break;

        int found = 0;
        while (std::fgets(line, sizeof line, file) != nullptr && line[0] != ')')
        {
            if (buffer != nullptr && found < capacity)
                storeProcLine(line, buffer[found]);
            ++found;
        }
        std::fclose(file);
        *count = found;
        return 0;
    }

    int copy_irq_route_table_from_rom_internal(_PCIIRQROUTENTRY* buffer, int* count)
    {
        if (count == nullptr)
            return -1;
        // Fetched once: a failure, or a table without entries, stays -1.
        if (internal_table_size == 0 &&
            (pci_irq_route_table_from_rom_internal() != 0 || internal_table_size == 0))
            internal_table_size = -1;
        if (internal_table_size < 1)
            return -1;
        // Copies no more than the caller's capacity, which a ROM table of up
        // to 64 entries could exceed.
        int copied = *count < internal_table_size ? *count : internal_table_size;
        if (buffer != nullptr && copied > 0)
            std::memcpy(buffer, internal_table, sizeof(_PCIIRQROUTENTRY) * copied);
        *count = internal_table_size;
        return 0;
    }

    int add_to_irq_route_table(_PCIIRQROUTENTRY* buffer, int capacity, int* count)
    {
        int known = internal_table_size > 0 ? internal_table_size : 0;
        return extend_irq_route_table(internal_table, known, buffer, capacity, count);
    }

    int extend_irq_route_table(_PCIIRQROUTENTRY const* known, int knownCount,
                               _PCIIRQROUTENTRY* buffer, int capacity, int* count)
    {
        if (count == nullptr)
            return -1;
        int predecessor[256];
        int highest = compute_predecessor_bridge(predecessor, 256);
        for (int bus = 0; bus <= highest; ++bus)
        {
            // Upward through the bridges above this bus; a chain longer than the
            // number of buses can only be a loop.
            _PCIIRQROUTENTRY const* found = nullptr;
            int bridge = predecessor[bus];
            for (int steps = 0; bridge >= 0 && found == nullptr && steps < 256; ++steps)
            {
                found =
                    get_irq_route_table_entry(known, knownCount, bridge >> 8, (bridge & 0xFF) >> 3);
                bridge = predecessor[bridge >> 8];
            }
            if (found == nullptr)
                continue;
            PCIListing* devices;
            for (int devfn = first_device(&devices, bus); devfn >= 0; devfn = next_device(&devices))
            {
                if (buffer != nullptr && *count < capacity)
                {
                    buffer[*count] = *found;
                    buffer[*count].bus = static_cast<unsigned char>(bus);
                    buffer[*count].devfn = static_cast<unsigned char>(devfn);
                }
                ++*count;
            }
        }
        return 0;
    }

    _PCIIRQROUTENTRY const* get_irq_route_table_entry(_PCIIRQROUTENTRY const* table, int count,
                                                      int bus, int device)
    {
        for (int i = 0; table != nullptr && i < count; ++i)
            if (table[i].bus == bus && table[i].devfn >> 3 == device)
                return &table[i];
        return nullptr;
    }

} // extern "C"
