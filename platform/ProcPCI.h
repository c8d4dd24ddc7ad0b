#pragma once

#include "platform/PCIIRQRouteEntry.h"
#include "platform/PCIIterator.h"

// PCI configuration space through the kernel's files under "/proc/bus/pci",
// bus and device listings, bus speed and the interrupt-routing table.
// Every function returns 0 (or a value >= 0) on success and a negative value
// on failure; none prints anything. A "devfn" is device << 3 | function; a
// "bus/devfn" is bus << 8 | devfn.
extern "C"
{
    // Opens "/proc/bus/pci/BB/DD.F" with open(2) `flags`: a descriptor or < 0.
    int pci_open(int bus, int device, int function, int flags);
    int pci_close(int fd);

    // Fills `buffer` with 0xFF first, then reads exactly `length` bytes at
    // `offset`; -1 when the seek or the read falls short.
    int pci_read_config(int bus, int device, int function, long long offset, void* buffer,
                        int length);
    // Writes exactly `length` bytes at `offset`; -1 on a short write.
    int pci_write_config(int bus, int device, int function, long long offset, void const* buffer,
                         int length);
    int pci_read_config_byte(int bus, int device, int function, long long offset,
                             unsigned char* value);
    int pci_read_config_word(int bus, int device, int function, long long offset,
                             unsigned short* value);
    int pci_read_config_dword(int bus, int device, int function, long long offset,
                              unsigned int* value);
    int pci_write_config_byte(int bus, int device, int function, long long offset,
                              unsigned char value);
    int pci_write_config_word(int bus, int device, int function, long long offset,
                              unsigned short value);
    int pci_write_config_dword(int bus, int device, int function, long long offset,
                               unsigned int value);
    // The standard 64-byte header.
    int pci_read_config_header(int bus, int device, int function, void* buffer);

    // Bus speed in MHz: 0 (status unreadable), 33, 66 or 133.
    int pci_read_config_speed(int bus, int device, int function);
    // 66 or 133 from the PCI-X capability at `capability`; 133 when its
    // status cannot be read.
    int pcix_speed(int bus, int device, int function, int capability);

    // Bus numbers (two-hex-digit entries of "/proc/bus/pci") and the devfn
    // values of one bus ("DD.F" entries), in directory order; -1 at the end.
    // The function that meets the end closes the listing and sets *dir to
    // null; a null listing is ended.
    int first_bus(PCIListing** dir);
    int next_bus(PCIListing** dir);
    int first_device(PCIListing** dir, int bus);
    int next_device(PCIListing** dir);

    // Bus/devfn values over all buses; -1 at the end. A bus directory without
    // devices after the first bus ends the walk there (deliberately kept).
    int first_pci_device(_PCI_ITER* iter);
    int next_pci_device(_PCI_ITER* iter);

    // table[0..n-1]: bus/devfn of the PCI-to-PCI bridge whose secondary bus is
    // the index, -1 where there is none. Returns the highest bus listed, -1
    // when none is.
    int compute_predecessor_bridge(int* table, int n);

    // Fills up to *count entries (the capacity on entry) from "/proc/vlmpci",
    // else from the ROM's table, extended for devices behind bridges; *count
    // becomes the number of entries found, which may exceed the capacity.
    int pci_irq_route_table(_PCIIRQROUTENTRY* buffer, int* count);
    // The entries of "/proc/vlmpci" (read afresh on every call); -1 when the
    // file cannot be read.
    int pci_irq_route_table_from_proc(_PCIIRQROUTENTRY* buffer, int* count);
    // The entries of `length` bytes of "/proc/vlmpci" text: the lines after
    // the one holding the first "(" and one more, up to a line beginning
    // with ")". Decodes only: touches no file and no hardware.
    int pci_irq_route_table_from_text(char const* text, unsigned length, _PCIIRQROUTENTRY* buffer,
                                      int* count);
    // The ROM's table, fetched once per process: -1 when there is none. At
    // most the capacity *count is copied; *count becomes the ROM's count.
    int copy_irq_route_table_from_rom_internal(_PCIIRQROUTENTRY* buffer, int* count);
    // Appends, for every device on a bus behind bridges, the ROM table's entry
    // of the nearest bridge above it that has one (bus and devfn replaced).
    int add_to_irq_route_table(_PCIIRQROUTENTRY* buffer, int capacity, int* count);
    // add_to_irq_route_table with `known` in place of the ROM's table.
    int extend_irq_route_table(_PCIIRQROUTENTRY const* known, int knownCount,
                               _PCIIRQROUTENTRY* buffer, int capacity, int* count);
    // The first entry of `table` for `bus` and `device` (function ignored).
    _PCIIRQROUTENTRY const* get_irq_route_table_entry(_PCIIRQROUTENTRY const* table, int count,
                                                      int bus, int device);
}
