#pragma once

#include "sim/Machine.h"
#include "sim/RomServices.h"

// Pieces of the simulated servers that several tests share.

// A ROM with environment variables: the maker's ROM services and one
// variable (a ROM with none does not answer the module's support test).
inline void addCorvaneRom(Sim::Machine& machine)
{
    Sim::RomServices::addStandardRom(machine);
    machine.environment().set("RXLANG", {'e', 'n'});
}

// The SMBIOS tables of a Corvane 2U, server 725, with 16 GiB of memory.
inline Sim::SmbiosBuilder corvaneTables()
{
    return Sim::SmbiosBuilder()
        .bios("Velmar", "VQ14", "05/05/2011")
        .system("Velmar", "Corvane \"Quillon\" 2U", "CZ2113ABCD")
        .chassis("ASSET-0042")
        .processor("Kestrel")
        .memoryDevice(8192)
        .memoryDevice(8192)
        .memoryDevice(4, 0x09) // flash: not counted
        .redundantRomDate("12/01/2010")
        .systemId("ZR0A0725");
}

// An array controller with one logical drive, which kAllBoards names, and a
// SATA controller with one disk.
inline void addStorage(Sim::Machine& machine)
{
    machine.addFunction({3, 0, 0}, 0x103C, 0x323A, 0x01, 0x04).subsystem(0x0E11, 0x3245);
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x3A22, 0x01, 0x06);
    machine.addDisk({{3, 0, 0}, "strata!c0d0", 146778685440});
    machine.addDisk({{0, 0x1F, 2}, "sda", 500107862016, false, true});
}
const char kAllBoards[] = "<AllBoards><PCI><dev id=\"103C323A0E113245\">"
                          "<name>Stratum Array R4e</name></dev></PCI></AllBoards>";
