#pragma once

// The register block handed to and returned from every call into the system
// ROM. Callers zero the whole block before filling the inputs: the ROM reads
// every field. Every ROM function is selected by AH/AL and reports its status
// in AH; al() and ah() read those bytes of eax.
struct RomCallRegisters
{
    unsigned int eax;
    unsigned int ebx;
    unsigned int ecx;
    unsigned int edx;
    unsigned int esi;
    unsigned int edi;
    unsigned short ds;
    unsigned short es;
    unsigned int eflags;

    unsigned char al() const { return static_cast<unsigned char>(eax & 0xFF); }
    unsigned char ah() const { return static_cast<unsigned char>((eax >> 8) & 0xFF); }
    // The answer of a ROM that does not offer the function: carry set, AH 0x86.
    void refuse()
    {
        eax = (eax & 0xFFFF00FFu) | 0x8600u;
        eflags |= 1u;
    }
};
