// "/proc/vlmpci" text through its decoder, and a "/proc/bus/pci" listing
// made from the input on the simulated server: the bus and device walks, the
// bridges, each function's configuration header and bus speed, and the
// routing table (extended by the ROM's entries for devices behind bridges).
//
// Input: the text of "/proc/vlmpci" (up to a NUL byte), then functions, each
// a bus, a device, a function, the size of its "/proc/bus/pci" file and its
// configuration bytes.

#include "tests/fuzz/FuzzServer.h"

#include "platform/ProcPCI.h"
#include "sim/RomServices.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <string>

namespace
{

void describe(Sim::Machine& machine)
{
    Sim::RomServices::addStandardRom(machine);
    Sim::RoutingLine route;
    route.at = {0, 0x1E, 0};
    route.slot = 5;
    machine.addRomRoute(route);
    machine.addRoutingLine(route);
}

void readListing()
{
    _PCI_ITER iter;
    for (int value = first_pci_device(&iter); value >= 0; value = next_pci_device(&iter))
    {
        int bus = value >> 8, device = (value & 0xFF) >> 3, function = value & 7;
        unsigned char header[64];
        pci_read_config_header(bus, device, function, header);
        pci_read_config_speed(bus, device, function);
    }
    int predecessor[256];
    compute_predecessor_bridge(predecessor, 256);
}

void readRoutingTables()
{
    _PCIIRQROUTENTRY table[16];
    for (int capacity : {0, 1, 16})
    {
        int count = capacity;
        pci_irq_route_table_from_proc(table, &count);
        count = capacity;
        pci_irq_route_table(table, &count);
        if (count < 0)
            __builtin_trap();
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Fuzz::Server& server = Fuzz::server(describe);
    server.machine.bridge().clear();

    FuzzedDataProvider input(data, size);
    std::string vlmpci;
    while (input.remaining_bytes() > 0)
    {
        const char c = input.ConsumeIntegral<char>();
        if (c == '\0')
            break;
        vlmpci += c;
    }
    _PCIIRQROUTENTRY decoded[8];
    int count = 8;
    if (pci_irq_route_table_from_text(vlmpci.data(), vlmpci.size(), decoded, &count) != 0 ||
        count < 0)
        __builtin_trap();

    for (unsigned entries = 0; entries < 16 && input.remaining_bytes() > 0; ++entries)
    {
        const Sim::PciLocation at{input.ConsumeIntegral<std::uint8_t>(),
                                  input.ConsumeIntegralInRange<std::uint8_t>(0, 31),
                                  input.ConsumeIntegralInRange<std::uint8_t>(0, 7)};
        const unsigned fileSize = input.ConsumeIntegralInRange<unsigned>(0, 256);
        const std::string bytes = input.ConsumeRandomLengthString(256);
        Sim::PciFunction& function = server.machine.addFunction(at, 0, 0, 0, 0);
        for (std::size_t offset = 0; offset < bytes.size(); ++offset)
            function.setByte(static_cast<std::uint8_t>(offset),
                             static_cast<std::uint8_t>(bytes[offset]));
        function.procFileSize(fileSize);
    }

    readListing();
    readRoutingTables();
    return 0;
}
