#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace Sim
{

class Machine;

// The services of a simulated system ROM, each a code stub in the machine's
// memory (sim/RomStub.h) served by C++ handlers.
namespace RomServices
{

const std::uint32_t kEnvironmentService = 0x53564524; // "$EVS"
const std::uint32_t kPciService = 0x49435024;         // "$PCI"

// Where addStandardRom puts things: the first directory offers "$PCI", the
// second "$EVS"; INT 15h enters at kInterrupt15.
const std::uint32_t kFirstDirectory = 0xE0000;
const std::uint32_t kSecondDirectory = 0xE0100;
const std::uint32_t kPciBios = 0xE1000;
const std::uint32_t kEnvironmentEntry = 0xE2000;
const std::uint32_t kInterrupt15 = 0xE8000;

// A BIOS32 service directory at `address` (16-byte aligned; its code
// follows the 16-byte header, so the next one may start 48 bytes later).
// Function 0 of its entry answers each identifier of `services` with the
// service's base, length and entry offset, and AL 0x80 for any other.
// `revision` other than 0 makes the header one the scan must not accept.
void addServiceDirectory(Machine& machine, std::uint32_t address,
                         std::vector<std::pair<std::uint32_t, std::uint32_t>> const& services,
                         std::uint8_t revision = 0);

// The PCI BIOS (far return): AX 0xB181 answers present, AX 0xB18E copies
// the machine's ROM routing table into the caller's buffer. The request
// block at EDI is a 16-bit buffer size and a 32-bit buffer offset; a size
// below the table's sets the size needed and answers AH 0x89.
void addPciBios(Machine& machine, std::uint32_t entry);

// The environment-variable functions of the machine's store: the handler of
// INT 15h at `interrupt15` (IRET), entered through the interrupt vector at
// physical 0x54, and the "$EVS" service at `service` (far return).
void addEnvironmentServices(Machine& machine, std::uint32_t interrupt15, std::uint32_t service);

// A Corvane ROM: the "VELMAR" signature, two service directories ("$EVS"
// only in the second), the PCI BIOS and the environment variables.
void addStandardRom(Machine& machine);

} // namespace RomServices
} // namespace Sim
