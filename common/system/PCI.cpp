#include "common/system/PCI.h"

#include "common/StaticMutex.h"
#include "common/system/IO.h"
#include "platform/ProcPCI.h"

namespace Common
{
namespace System
{

namespace
{
const unsigned int kAddressPort = 0xCF8;
const unsigned int kDataPort = 0xCFC;
const unsigned int kLastOffset = 0xFF;
const int kSlotTableCapacity = 50;

// One configuration cycle (address, then data) at a time: the start-up job's
// inventory and a request's NVRAM access would otherwise select each other's
// registers.
Synchronization::StaticMutex s_configurationCycle;

// Selects the configuration dword of `offset` on the host bridge; the data
// then moves through 0xCFC plus the offset's byte within that dword.
bool select(const PCI::_PCI_ADDRESS& address, unsigned int offset)
{
    unsigned int word = 0x80000000u | static_cast<unsigned int>(address.bus) << 16 |
                        (address.device & 31u) << 11 | (address.function & 7u) << 8 |
                        (offset & ~3u);
    return IO::Write(kAddressPort, word);
}

template <class Value>
bool readConfig(const PCI::_PCI_ADDRESS& address, unsigned int offset, Value& value)
{
    return offset <= kLastOffset &&
           s_configurationCycle.holding(
               [&] { return select(address, offset) && IO::Read(kDataPort + (offset & 3), value); });
}

template <class Value>
bool writeConfig(const PCI::_PCI_ADDRESS& address, unsigned int offset, const Value& value)
{
    return offset <= kLastOffset &&
           s_configurationCycle.holding(
               [&] { return select(address, offset) && IO::Write(kDataPort + (offset & 3), value); });
}
} // namespace

bool PCI::Read(const _PCI_ADDRESS& address, const unsigned int& offset, unsigned int& value)
{
    return readConfig(address, offset, value);
}

bool PCI::Read(const _PCI_ADDRESS& address, const unsigned int& offset, unsigned short& value)
{
    return readConfig(address, offset, value);
}

bool PCI::Read(const _PCI_ADDRESS& address, const unsigned int& offset, unsigned char& value)
{
    return readConfig(address, offset, value);
}

bool PCI::Write(const _PCI_ADDRESS& address, const unsigned int& offset, const unsigned int& value)
{
    return writeConfig(address, offset, value);
}

bool PCI::Write(const _PCI_ADDRESS& address, const unsigned int& offset,
                const unsigned short& value)
{
    return writeConfig(address, offset, value);
}

bool PCI::Write(const _PCI_ADDRESS& address, const unsigned int& offset, const unsigned char& value)
{
    return writeConfig(address, offset, value);
}

bool PCI::VendorID(const _PCI_ADDRESS& address, unsigned short& id)
{
    return Read(address, 0x00, id);
}

bool PCI::DeviceID(const _PCI_ADDRESS& address, unsigned short& id)
{
    return Read(address, 0x02, id);
}

bool PCI::SubsystemID(const _PCI_ADDRESS& address, unsigned int& id)
{
    if (!Read(address, 0x2C, id))
        return false;
    id = SwapOrderDWord(id);
    return true;
}

bool PCI::ClassCode(const _PCI_ADDRESS& address, unsigned char& code)
{
    return Read(address, 0x0B, code);
}

bool PCI::SubclassCode(const _PCI_ADDRESS& address, unsigned char& code)
{
    return Read(address, 0x0A, code);
}

bool PCI::InitializeEnumerate(_PCI_ADDRESS& address)
{
    address.bus = 0;
    address.device = 0;
    address.function = 0;
    address.flags = static_cast<signed char>(0x80);
    return true;
}

bool PCI::EnumerateDevice(_PCI_ADDRESS& address)
{
    int bus = 0;
    int device = 0;
    int function = 0;
    if ((address.flags & 0x80) == 0)
    {
        bus = address.bus;
        device = address.device;
        function = address.function + 1;
    }
    else
    {
        // 0 for the marker alone; other bits below 7 survive.
        address.flags = static_cast<signed char>(address.flags % 128);
    }
    for (; bus <= 255; ++bus, device = 0)
        for (; device <= 31; ++device, function = 0)
            for (; function <= 7; ++function)
            {
                address.bus = static_cast<unsigned char>(bus);
                address.device = static_cast<unsigned char>(device);
                address.function = static_cast<unsigned char>(function);
                unsigned short vendor = 0xFFFF;
                if (VendorID(address, vendor) && vendor < 0xFFFF)
                    return true;
            }
    return false;
}

bool PCI::Slot(const _PCI_ADDRESS& address, unsigned char& slot)
{
    slot = 255;
    _PCIIRQROUTENTRY table[kSlotTableCapacity];
    int count = kSlotTableCapacity;
    if (pci_irq_route_table(table, &count) != 0)
        return false;
    slot = 0;
    int listed = count < kSlotTableCapacity ? count : kSlotTableCapacity;
    for (int i = 0; i < listed; ++i)
        if (table[i].bus == address.bus && table[i].devfn >> 3 == address.device)
        {
            slot = table[i].slot;
            break;
        }
    return false;
}

unsigned int PCI::SwapOrderDWord(unsigned int value)
{
    return value << 16 | value >> 16;
}

} // namespace System
} // namespace Common
