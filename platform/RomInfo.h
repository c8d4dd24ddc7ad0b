#pragma once

// One use of the system ROM: the caller zero-fills it, romcall_init fills
// it, romcall_fini releases and zeroes it. Entry pointers are addresses
// inside the mapping at `base`, null when not found.
struct rominfo_t
{
    int fd;                     // "/dev/mem"
    unsigned char* base;        // physical 0xA0000..0xFFFFF, mapped at base + P - 0xA0000
    void* int15_entry;          // handler of software interrupt 15h
    void* ev_entry;             // the "$EVS" service
    void* pci_entry;            // the PCI BIOS ("$PCI")
    unsigned short pci_present; // non-zero when the PCI BIOS answered its presence call
};
