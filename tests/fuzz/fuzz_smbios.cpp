// An SMBIOS entry point and structure table from the input, read through
// SMBios from the simulated server's physical memory, with every getter the
// system-summary page uses and a walk over every record type's strings.
//
// Input: a mode byte, then either the whole BIOS segment 0xF0000..0xFFFFF
// as raw bytes (the entry point wherever the input puts its "_SM_"), or the
// entry point's length, count and table address followed by the table.

#include "tests/fuzz/FuzzServer.h"

#include "common/system/SMBios.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace
{
const std::uint32_t kSegment = 0xF0000;

void readEverything(const Common::System::SMBios& smbios)
{
    smbios.GetROMName();
    smbios.GetROMDate();
    smbios.GetRedundantROMDate();
    smbios.GetProductName();
    smbios.GetSerialNumber();
    smbios.GetAssetTag();
    smbios.GetSystemID();
    smbios.GetServerID();
    smbios.GetTotalRAM();
    smbios.GetProcessorManufacturer();
    unsigned char* records[8];
    const unsigned int max = 8;
    for (unsigned type = 0; type < 256; ++type)
    {
        const unsigned char t = static_cast<unsigned char>(type);
        unsigned char* first = smbios.GetRecordByType(t);
        unsigned int found = smbios.GetRecordByType(t, records, max);
        if ((first == nullptr) != (found == 0) || found > max)
            __builtin_trap();
        for (unsigned int r = 0; r < found; ++r)
            for (unsigned int index = 0; index < 4; ++index)
                smbios.GetString(records[r], index);
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Sim::Machine& machine = Fuzz::server([](Sim::Machine&) {}).machine;
    // The whole memory, as a table from an earlier input may lie anywhere.
    std::memset(machine.memory().at(0), 0, Sim::PhysicalMemory::kSize);

    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool())
    {
        machine.memory().write(kSegment, input.ConsumeRemainingBytes<std::uint8_t>());
    }
    else
    {
        Sim::EntryPointPlacement placement;
        placement.length = input.ConsumeIntegral<std::uint16_t>();
        placement.count = input.ConsumeIntegral<std::uint16_t>();
        // Mostly a table in the BIOS segment; sometimes anywhere at all.
        placement.table = input.ConsumeBool() ? input.ConsumeIntegral<std::uint32_t>()
                                              : kSegment + 0x1000 +
                                                    input.ConsumeIntegralInRange<std::uint32_t>(0, 0xE000);
        Sim::SmbiosBuilder table;
        table.raw(input.ConsumeRemainingBytes<std::uint8_t>());
        machine.installSmbios(table, placement);
    }

    const Common::System::SMBios smbios;
    readEverything(smbios);
    return 0;
}
