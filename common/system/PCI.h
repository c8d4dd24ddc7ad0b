#pragma once

namespace Common
{
namespace System
{

// PCI configuration space through the host bridge's configuration mechanism
// #1 (ports 0xCF8/0xCFC), brute-force enumeration, and slot numbers from the
// interrupt-routing table. All operations are static and report success as
// bool. No lock is taken: the port pair is process-wide, so callers must not
// use it from two threads at once.
class PCI
{
public:
    struct _PCI_ADDRESS
    {
        unsigned char bus;
        unsigned char device;   // 0..31; only the low 5 bits are used
        unsigned char function; // 0..7; only the low 3 bits are used
        signed char flags;      // bit 7: enumeration not started yet
    };

    // Configuration access of the value's width at `offset` (0..255; larger
    // offsets fail without touching the bus).
    static bool Read(const _PCI_ADDRESS& address, const unsigned int& offset, unsigned int& value);
    static bool Read(const _PCI_ADDRESS& address, const unsigned int& offset,
                     unsigned short& value);
    static bool Read(const _PCI_ADDRESS& address, const unsigned int& offset, unsigned char& value);
    static bool Write(const _PCI_ADDRESS& address, const unsigned int& offset,
                      const unsigned int& value);
    static bool Write(const _PCI_ADDRESS& address, const unsigned int& offset,
                      const unsigned short& value);
    static bool Write(const _PCI_ADDRESS& address, const unsigned int& offset,
                      const unsigned char& value);

    static bool VendorID(const _PCI_ADDRESS& address, unsigned short& id);
    static bool DeviceID(const _PCI_ADDRESS& address, unsigned short& id);
    // Subsystem vendor ID in the high half, subsystem ID in the low half.
    static bool SubsystemID(const _PCI_ADDRESS& address, unsigned int& id);
    static bool ClassCode(const _PCI_ADDRESS& address, unsigned char& code);
    static bool SubclassCode(const _PCI_ADDRESS& address, unsigned char& code);

    // Zeroes the address and marks it "enumeration not started".
    static bool InitializeEnumerate(_PCI_ADDRESS& address);
    // Moves `address` to the next present function in bus/device/function
    // order (every function of every device is probed); false when none is
    // left.
    static bool EnumerateDevice(_PCI_ADDRESS& address);

    // Slot number from the routing table: 255 when there is no table, 0 when
    // the device is not listed or embedded. Returns false in every case;
    // callers read the out value only.
    static bool Slot(const _PCI_ADDRESS& address, unsigned char& slot);

    // The value rotated by 16 bits (its two halves exchanged).
    static unsigned int SwapOrderDWord(unsigned int value);
};

} // namespace System
} // namespace Common
