#include "common/system/EnvironmentVariable.h"

#include "common/StaticMutex.h"
#include "platform/Hardware.h"
#include "platform/RomAccess.h"

#include <cstring>

namespace Common
{

namespace
{
const unsigned char kBusy = 0x8A;
const int kAttempts = 30;
const unsigned int kBusyWaitMicroseconds = 1000000;
const unsigned int kNameBufferSize = 0x400;

enum Outcome
{
    Done,
    StillBusy, // busy on every attempt
    Failed
};

unsigned int address(void const* pointer)
{
    return static_cast<unsigned int>(reinterpret_cast<unsigned long>(pointer));
}

// Calls the INT 15h handler with `request`, asking again a second later
// while the ROM answers busy; `answer` holds the registers of the last call.
Outcome callWithRetry(rominfo_t& rom, RomCallRegisters const& request, RomCallRegisters& answer)
{
    for (int attempt = 0; attempt < kAttempts; ++attempt)
    {
        answer = request;
        do_rom_call(&rom, &answer, rom.int15_entry, 1);
        if (answer.ah() == 0)
            return Done;
        if (answer.ah() != kBusy)
            return Failed;
        Platform::hardware().sleepMicroseconds(kBusyWaitMicroseconds);
    }
    return StillBusy;
}

RomCallRegisters request(unsigned int ax, unsigned int bx, unsigned int cx, void const* si,
                         void const* di)
{
    RomCallRegisters block;
    std::memset(&block, 0, sizeof block);
    block.eax = ax;
    block.ebx = bx;
    block.ecx = cx & 0xFFFF;
    block.esi = address(si);
    block.edi = address(di);
    return block;
}

Outcome enumerate(rominfo_t& rom, unsigned int index, char (&name)[kNameBufferSize])
{
    std::memset(name, 0, sizeof name);
    RomCallRegisters answer;
    Outcome outcome =
        callWithRetry(rom, request(0xD8A6, index, kNameBufferSize, name, nullptr), answer);
    name[kNameBufferSize - 1] = '\0';
    return outcome;
}

// One call bracketed by romcall_init and romcall_fini; false when the ROM
// cannot be set up or the ROM fails the call.
bool callOnce(RomCallRegisters const& call, RomCallRegisters& answer)
{
    rominfo_t rom;
    std::memset(&rom, 0, sizeof rom);
    bool result = false;
    if (romcall_init(&rom, 0) == 0)
        result = callWithRetry(rom, call, answer) != Failed;
    romcall_fini(&rom);
    return result;
}

// The start-up job and a request may ask at once; the first asks the ROM.
Synchronization::StaticMutex s_supportedCheck;
bool s_supportedKnown = false;
bool s_supported = false;
} // namespace

bool EnvironmentVariable::supported()
{
    return s_supportedCheck.holding(
        []
        {
            if (!s_supportedKnown)
            {
                rominfo_t rom;
                std::memset(&rom, 0, sizeof rom);
                char name[kNameBufferSize];
                s_supported = romcall_init(&rom, 0) == 0 && rom.pci_present != 0 &&
                              enumerate(rom, 0, name) == Done;
                romcall_fini(&rom);
                s_supportedKnown = true;
            }
            return s_supported;
        });
}

bool EnvironmentVariable::read(const char* name, unsigned char* buffer, unsigned int& size)
{
    if (name == nullptr || buffer == nullptr || !supported())
        return false;
    RomCallRegisters answer;
    std::memset(&answer, 0, sizeof answer);
    if (!callOnce(request(0xD8A4, 0, size, name, buffer), answer))
        return false;
    if (answer.ah() == 0)
        size = answer.ecx & 0xFFFF;
    return true;
}

bool EnvironmentVariable::write(const char* name, unsigned char* data, unsigned int& size)
{
    if (name == nullptr || data == nullptr || !supported())
        return false;
    RomCallRegisters answer;
    return callOnce(request(0xD8A5, 0, size, name, data), answer);
}

list<string> EnvironmentVariable::names()
{
    list<string> found;
    if (!supported())
        return found;
    rominfo_t rom;
    std::memset(&rom, 0, sizeof rom);
    if (romcall_init(&rom, 0) == 0)
    {
        char name[kNameBufferSize];
        for (unsigned int index = 0; index <= 0xFFFF; ++index)
        {
            Outcome outcome = enumerate(rom, index, name);
            if (outcome == Failed)
                break;
            if (outcome == Done)
                found.push_back(string(name));
        }
    }
    romcall_fini(&rom);
    return found;
}

} // namespace Common
