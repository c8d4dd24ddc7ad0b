#include "platform/ProcPCI.h"

namespace
{
const unsigned short kStatus66MHzCapable = 0x20;
const unsigned short kStatusCapabilityList = 0x10;
const unsigned char kCapabilityPCIX = 0x07;
const unsigned int kPCIXStatus133MHzCapable = 0x20000;
} // namespace

extern "C"
{

    int pci_read_config_speed(int bus, int device, int function)
    {
        unsigned short status;
        if (pci_read_config_word(bus, device, function, 0x06, &status) != 0)
            return 0;
        int speed = (status & kStatus66MHzCapable) ? 66 : 33;
        if ((status & kStatusCapabilityList) == 0)
            return speed;

        unsigned char pointer;
        if (pci_read_config_byte(bus, device, function, 0x34, &pointer) != 0)
            return speed;
        pointer &= 0xFC;
        // A list is at most 48 capabilities long (192 bytes of 4-byte-aligned
        // entries); the bound stops a list that points back into itself.
        for (int visited = 0; pointer != 0 && visited < 48; ++visited)
        {
            unsigned char id;
            unsigned char next;
            if (pci_read_config_byte(bus, device, function, pointer, &id) != 0 ||
                pci_read_config_byte(bus, device, function, pointer + 1, &next) != 0 || id == 0xFF)
                break;
            if (id == kCapabilityPCIX)
                return pcix_speed(bus, device, function, pointer);
            pointer = next & 0xFC;
        }
        return speed;
    }

    int pcix_speed(int bus, int device, int function, int capability)
    {
        unsigned int status;
        if (pci_read_config_dword(bus, device, function, capability + 4, &status) == 0 &&
            (status & kPCIXStatus133MHzCapable) == 0)
            return 66;
        return 133;
    }

} // extern "C"
