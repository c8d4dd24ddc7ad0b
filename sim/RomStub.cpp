#include "sim/RomStub.h"

#include "sim/Machine.h"

namespace
{
// The stack as the stub hands it over: PUSHAD's registers, the flags the
// stub pushed, the caller's return address and code segment, and the flags
// of an interrupt-style entry.
struct StubFrame
{
    std::uint32_t edi, esi, ebp, esp, ebx, edx, ecx, eax;
    std::uint32_t flags;
    std::uint32_t returnAddress, codeSegment;
    std::uint32_t interruptFlags; // present for RomReturn::Interrupt only
};

void append32(std::vector<std::uint8_t>& code, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i)
        code.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}
} // namespace

// Called from the stub with a stack of unknown alignment; no exception may
// leave it (there is no unwind information for the stub).
extern "C" __attribute__((force_align_arg_pointer, used)) void
sim_rom_service(StubFrame* frame, Sim::Machine const* machine, std::uint32_t entry)
{
    Sim::Machine::RomEntry const* found = machine->romService(entry);
    bool interrupt = found != nullptr && found->returns == Sim::RomReturn::Interrupt;
    std::uint32_t& flags = interrupt ? frame->interruptFlags : frame->flags;

    RomCallRegisters registers = {};
    registers.eax = frame->eax;
    registers.ebx = frame->ebx;
    registers.ecx = frame->ecx;
    registers.edx = frame->edx;
    registers.esi = frame->esi;
    registers.edi = frame->edi;
    registers.eflags = flags & ~1u;
    try
    {
        if (found == nullptr)
            registers.refuse();
        else
            found->service(registers);
    }
    catch (...)
    {
        registers.refuse();
    }
    frame->eax = registers.eax;
    frame->ebx = registers.ebx;
    frame->ecx = registers.ecx;
    frame->edx = registers.edx;
    frame->esi = registers.esi;
    frame->edi = registers.edi;
    flags = (flags & ~1u) | (registers.eflags & 1u);
}

namespace Sim
{

std::vector<std::uint8_t> romStub(Machine const& machine, std::uint32_t entry, RomReturn returns)
{
    std::vector<std::uint8_t> code = {0x9C, 0x60, 0x89, 0xE0}; // pushf; pusha; mov %esp,%eax
    code.push_back(0x68);                                      // push $entry
    append32(code, entry);
    code.push_back(0x68); // push $machine
    append32(code, static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&machine)));
    code.push_back(0x50); // push %eax (the frame)
    code.push_back(0xB8); // mov $sim_rom_service,%eax
    append32(code, static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(&sim_rom_service)));
    code.insert(code.end(), {0xFF, 0xD0});                         // call *%eax
    code.insert(code.end(), {0x83, 0xC4, 0x0C});                   // add $12,%esp
    code.insert(code.end(), {0x61, 0x9D});                         // popa; popf
    code.push_back(returns == RomReturn::Interrupt ? 0xCF : 0xCB); // iret / lret
    return code;
}

} // namespace Sim
