#include "sim/RomServices.h"

#include "sim/Machine.h"

#include <cstring>

namespace Sim
{
namespace RomServices
{

namespace
{
const std::uint32_t kServiceLength = 0x1000;

void setAH(RomCallRegisters& registers, std::uint8_t ah)
{
    registers.eax = (registers.eax & 0xFFFF00FFu) | static_cast<std::uint32_t>(ah) << 8;
    registers.eflags = ah == 0 ? registers.eflags & ~1u : registers.eflags | 1u;
}

std::vector<std::uint8_t> routingTable(Machine const& machine)
{
    std::vector<std::uint8_t> table;
    for (RoutingLine const& route : machine.romRoutes())
    {
        std::vector<std::uint8_t> entry(16, 0);
        entry[0] = route.at.bus;
        entry[1] = static_cast<std::uint8_t>(route.at.device << 3 | route.at.function);
        entry[2] = route.link;
        entry[3] = static_cast<std::uint8_t>(route.bitmap);
        entry[4] = static_cast<std::uint8_t>(route.bitmap >> 8);
        entry[14] = route.slot;
        table.insert(table.end(), entry.begin(), entry.end());
    }
    return table;
}

// AX 0xB18E: the request block is a 16-bit size and a 32-bit offset.
void copyRoutingTable(Machine const& machine, RomCallRegisters& registers)
{
    auto* request = reinterpret_cast<std::uint8_t*>(static_cast<std::uintptr_t>(registers.edi));
    std::uint16_t size;
    std::uint32_t offset;
    std::memcpy(&size, request, 2);
    std::memcpy(&offset, request + 2, 4);
    std::vector<std::uint8_t> table = routingTable(machine);
    std::uint16_t needed = static_cast<std::uint16_t>(table.size());
    std::memcpy(request, &needed, 2);
    if (needed > size)
        return setAH(registers, 0x89);
    if (!table.empty())
        std::memcpy(reinterpret_cast<void*>(static_cast<std::uintptr_t>(offset)), table.data(),
                    table.size());
    registers.ebx = 0;
    setAH(registers, 0);
}
// Function 0 of a service directory: AL 0 with EBX base, ECX length and
// EDX the entry's offset from the base; AL 0x80 for an unknown service.
void answerServiceQuery(std::vector<std::pair<std::uint32_t, std::uint32_t>> const& services,
                        RomCallRegisters& registers)
{
    std::uint32_t identifier = registers.eax;
    registers.eax &= 0xFFFFFF00u;
    if (registers.ebx != 0)
    {
        registers.eax |= 0x81;
        return;
    }
    for (auto const& [known, entry] : services)
        if (known == identifier)
        {
            registers.ebx = entry & ~(kServiceLength - 1);
            registers.ecx = kServiceLength;
            registers.edx = entry - registers.ebx;
            return;
        }
    registers.eax |= 0x80;
}
} // namespace

void addServiceDirectory(Machine& machine, std::uint32_t address,
                         std::vector<std::pair<std::uint32_t, std::uint32_t>> const& services,
                         std::uint8_t revision)
{
    std::uint32_t entry = address + 16;
    std::vector<std::uint8_t> header = {'_', '3', '2', '_'};
    for (int i = 0; i < 4; ++i)
        header.push_back(static_cast<std::uint8_t>(entry >> (8 * i)));
    header.insert(header.end(), {revision, 1, 0, 0, 0, 0, 0, 0});
    std::uint8_t sum = 0;
    for (std::uint8_t b : header)
        sum = static_cast<std::uint8_t>(sum + b);
    header[10] = static_cast<std::uint8_t>(0x100 - sum);
    machine.memory().write(address, header);

    machine.addRomService(entry, RomReturn::FarCall,
                          [services](RomCallRegisters& registers)
                          { answerServiceQuery(services, registers); });
}

void addPciBios(Machine& machine, std::uint32_t entry)
{
    Machine const* rom = &machine;
    machine.addRomService(entry, RomReturn::FarCall,
                          [rom](RomCallRegisters& registers)
                          {
                              std::uint16_t function = static_cast<std::uint16_t>(registers.eax);
                              if (function == 0xB18E)
                                  return copyRoutingTable(*rom, registers);
                              if (function != 0xB181)
                                  return registers.refuse();
                              registers.eax = 0x0001;     // configuration mechanism #1
                              registers.ebx = 0x0210;     // version 2.10
                              registers.ecx = 0xFF;       // last bus
                              registers.edx = 0x20494350; // "PCI "
                              setAH(registers, 0);
                          });
}

void addEnvironmentServices(Machine& machine, std::uint32_t interrupt15, std::uint32_t service)
{
    EnvironmentStore* store = &machine.environment();
    auto answer = [store](RomCallRegisters& registers) { store->answer(registers); };
    machine.addRomService(interrupt15, RomReturn::Interrupt, answer);
    machine.addRomService(service, RomReturn::FarCall, answer);
    // Vector 15h: offset, then segment.
    std::uint16_t segment = static_cast<std::uint16_t>(interrupt15 >> 4 & 0xF000);
    std::uint16_t offset = static_cast<std::uint16_t>(interrupt15 - segment * 16u);
    std::vector<std::uint8_t> vector = {
        static_cast<std::uint8_t>(offset), static_cast<std::uint8_t>(offset >> 8),
        static_cast<std::uint8_t>(segment), static_cast<std::uint8_t>(segment >> 8)};
    machine.memory().write(0x54, vector);
}

void addStandardRom(Machine& machine)
{
    machine.signVelmar();
    addServiceDirectory(machine, kFirstDirectory, {{kPciService, kPciBios}});
    addServiceDirectory(machine, kSecondDirectory, {{kEnvironmentService, kEnvironmentEntry}});
    addPciBios(machine, kPciBios);
    addEnvironmentServices(machine, kInterrupt15, kEnvironmentEntry);
}

} // namespace RomServices
} // namespace Sim
