#include "platform/Hardware.h"
#include "platform/ProcPCI.h"

#include <cstring>
#include <fcntl.h>

using Common::Platform::hardware;

extern "C"
{

    int pci_open(int bus, int device, int function, int flags)
    {
        return hardware().openPCIConfig(bus, device, function, flags);
    }

    int pci_close(int fd)
    {
        hardware().closePCIConfig(fd);
        return 0;
    }

    int pci_read_config(int bus, int device, int function, long long offset, void* buffer,
                        int length)
    {
        if (buffer == nullptr || length < 0)
            return -1;
        std::memset(buffer, 0xFF, static_cast<unsigned>(length));
        int fd = pci_open(bus, device, function, O_RDONLY);
        if (fd < 0)
            return -1;
        bool complete = hardware().readPCIConfig(fd, offset, buffer, static_cast<unsigned>(length));
        pci_close(fd);
        return complete ? 0 : -1;
    }

    int pci_write_config(int bus, int device, int function, long long offset, void const* buffer,
                         int length)
    {
        if (buffer == nullptr || length < 0)
            return -1;
        int fd = pci_open(bus, device, function, O_RDWR);
        if (fd < 0)
            return -1;
        bool complete =
            hardware().writePCIConfig(fd, offset, buffer, static_cast<unsigned>(length));
        pci_close(fd);
        return complete ? 0 : -1;
    }

    int pci_read_config_byte(int bus, int device, int function, long long offset,
                             unsigned char* value)
    {
        return pci_read_config(bus, device, function, offset, value, 1);
    }

    int pci_read_config_word(int bus, int device, int function, long long offset,
                             unsigned short* value)
    {
        return pci_read_config(bus, device, function, offset, value, 2);
    }

    int pci_read_config_dword(int bus, int device, int function, long long offset,
                              unsigned int* value)
    {
        return pci_read_config(bus, device, function, offset, value, 4);
    }

    int pci_write_config_byte(int bus, int device, int function, long long offset,
                              unsigned char value)
    {
        return pci_write_config(bus, device, function, offset, &value, 1);
    }

    int pci_write_config_word(int bus, int device, int function, long long offset,
                              unsigned short value)
    {
        return pci_write_config(bus, device, function, offset, &value, 2);
    }

    int pci_write_config_dword(int bus, int device, int function, long long offset,
                               unsigned int value)
    {
        return pci_write_config(bus, device, function, offset, &value, 4);
    }

    int pci_read_config_header(int bus, int device, int function, void* buffer)
    {
        return pci_read_config(bus, device, function, 0, buffer, 64);
    }

} // extern "C"
