#pragma once

#include "sim/Machine.h"
#include "sim/RomServices.h"

// Pieces of the simulated servers that several tests share.

// The maker's ROM services with one variable (a ROM with none is unsupported).
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

// An array controller (kAllBoards names it) and a SATA one, a disk each.
inline void addStorage(Sim::Machine& machine)
{
    machine.addFunction({3, 0, 0}, 0x103C, 0x323A, 0x01, 0x04).subsystem(0x0E11, 0x3245);
    machine.addFunction({0, 0x1F, 2}, 0x8086, 0x3A22, 0x01, 0x06);
    machine.addDisk({{3, 0, 0}, "strata!c0d0", 146778685440});
    machine.addDisk({{0, 0x1F, 2}, "sda", 500107862016, false, true});
}
const char kAllBoards[] = "<AllBoards><PCI><dev id=\"103C323A0E113245\">"
                          "<name>Stratum Array R4e</name></dev></PCI></AllBoards>";
