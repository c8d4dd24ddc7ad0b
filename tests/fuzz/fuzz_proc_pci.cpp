// "/proc/vlmpci" and the "/proc/bus/pci" listing made from the input, in the
// simulated server's proc tree: the bus and device walks, the bridges, each
// function's configuration header and bus speed, and the routing table read
// from "/proc/vlmpci" (extended by the ROM's entries for devices behind
// bridges).
//
// Input: the text of "/proc/vlmpci" (up to a NUL byte), then entries of the
// listing, each a bus folder name, a function file name and the file's
// bytes. Names that a file system cannot hold ("", ".", "..", or with "/")
// are skipped.

#include "tests/fuzz/FuzzServer.h"

#include "platform/Hardware.h"
#include "platform/ProcPCI.h"
#include "sim/RomServices.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

namespace
{
namespace fs = std::filesystem;

bool fileSystemName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

void writeFile(const fs::path& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

void describe(Sim::Machine& machine)
{
    Sim::RomServices::addStandardRom(machine);
    Sim::RoutingLine route;
    route.at = {0, 0x1E, 0};
    route.slot = 5;
    machine.addRomRoute(route);
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
    const fs::path proc = server.hardware.root() / "proc";
    std::error_code ignored;
    fs::remove_all(proc, ignored);
    fs::create_directories(proc / "bus" / "pci");

    FuzzedDataProvider input(data, size);
    std::string vlmpci;
    while (input.remaining_bytes() > 0)
    {
        const char c = input.ConsumeIntegral<char>();
        if (c == '\0')
            break;
        vlmpci += c;
    }
    writeFile(proc / "vlmpci", vlmpci);

    for (unsigned entries = 0; entries < 16 && input.remaining_bytes() > 0; ++entries)
    {
        const std::string bus = input.ConsumeRandomLengthString(4);
        const std::string function = input.ConsumeRandomLengthString(8);
        const std::string bytes = input.ConsumeRandomLengthString(300);
        if (!fileSystemName(bus))
            continue;
        const fs::path folder = proc / "bus" / "pci" / bus;
        fs::create_directories(folder, ignored);
        if (fileSystemName(function))
            writeFile(folder / function, bytes);
    }

    readListing();
    readRoutingTables();
    return 0;
}
