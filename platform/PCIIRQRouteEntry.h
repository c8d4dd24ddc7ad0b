#pragma once

// One slot entry of a PCI interrupt-routing table, laid out as the PCI BIOS
// returns it (16 bytes, no padding).
struct __attribute__((packed)) _PCIIRQROUTENTRY
{
    struct __attribute__((packed)) Pin
    {
        unsigned char link;
        unsigned short bitmap;
    };

    unsigned char bus;
    unsigned char devfn; // device number in bits 7..3
    Pin pin[4];          // INTA# .. INTD#
    unsigned char slot;  // 0: embedded device
    unsigned char reserved;
};

static_assert(sizeof(_PCIIRQROUTENTRY) == 16, "routing entries are 16 bytes");
