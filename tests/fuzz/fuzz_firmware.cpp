// A firmware image from the input in the simulated server's ROM area
// (physical 0xE0000..0xFFFFF): the IPL table scan and decoding, the ROM's
// service directories, and the interrupt-routing table the ROM's entries
// give to the devices behind bridges.
//
// The machine keeps a working ROM (its service code stubs, which are real
// x86 code, are put back after the image is written, so the image can never
// make the process run its bytes) and a bus behind a bridge. The ROM's own
// routing table is fetched once per process, as the product does; the
// routing entries of each input come in through extend_irq_route_table.
//
// Input: a flag whether the image keeps the ROM's signature, the number of
// routing entries and their 16 bytes each, then the image: the BIOS segment
// 0xF0000..0xFFFFF first (where the IPL table lies), then 0xE0000..0xEFFFF,
// zero-filled to its end.

#include "tests/fuzz/FuzzServer.h"

#include "collection/IPLTable.h"
#include "platform/ProcPCI.h"
#include "platform/RomAccess.h"
#include "sim/RomServices.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace
{
const std::uint32_t kRomStart = 0xE0000;
const std::uint32_t kBiosSegment = 0xF0000;
const std::uint32_t kSegmentSize = 0x10000;

void describe(Sim::Machine& machine)
{
    machine.addBridge({0, 0x1E, 0}, 2);
    machine.addFunction({2, 3, 0}, 0x1AF4, 0x1000, 0x02, 0x00);
    machine.addFunction({2, 4, 0}, 0x1AF4, 0x1001, 0x01, 0x04);
    Sim::RoutingLine route;
    route.at = {0, 0x1E, 0};
    route.slot = 3;
    machine.addRomRoute(route);
}

void readIplTable()
{
    const Collection::IPLTable table;
    for (unsigned int index = 0; index <= table.count(); ++index)
    {
        const Collection::IPLTable::_IPL_TABLE_ENTRY& entry = table[index];
        if (index == table.count() && entry.type != 0)
            __builtin_trap();
        entry.name.size();
        entry.description.size();
    }
    if (table.count() > Collection::IPLTable::kMaximumEntries)
        __builtin_trap();
}

// romcall_init walks the service directories twice over (for "$EVS" and
// "$PCI"), entering each directory the image offers; the machine refuses
// every entry but its own services' code.
void readRomServices()
{
    rominfo_t rom;
    std::memset(&rom, 0, sizeof rom);
    romcall_init(&rom, 0);
    romcall_fini(&rom);
}

void readRoutingTable(const std::vector<_PCIIRQROUTENTRY>& known)
{
    _PCIIRQROUTENTRY table[32];
    int count = 4;
    extend_irq_route_table(known.data(), static_cast<int>(known.size()), table, 32, &count);
    if (count < 4)
        __builtin_trap();
    count = 32;
    pci_irq_route_table(table, &count);
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Sim::Machine& machine = Fuzz::server(describe).machine;
    FuzzedDataProvider input(data, size);
    const bool signedRom = input.ConsumeBool();
    std::vector<_PCIIRQROUTENTRY> known(input.ConsumeIntegralInRange<unsigned>(0, 8));
    for (_PCIIRQROUTENTRY& entry : known)
        input.ConsumeData(&entry, sizeof entry);

    std::vector<std::uint8_t> image = input.ConsumeRemainingBytes<std::uint8_t>();
    image.resize(2 * kSegmentSize, 0);
    machine.memory().write(kBiosSegment, std::vector<std::uint8_t>(image.begin(), image.begin() + kSegmentSize));
    machine.memory().write(kRomStart, std::vector<std::uint8_t>(image.begin() + kSegmentSize, image.end()));
    Sim::RomServices::addStandardRom(machine);
    if (!signedRom)
        machine.memory().write(0xFFFEA, std::string(6, '\0'));

    readIplTable();
    readRomServices();
    readRoutingTable(known);
    return 0;
}
