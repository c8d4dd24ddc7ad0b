#include "platform/ProcPCI.h"
#include "platform/ProcPCIPath.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace
{
// Positions `fd` at `offset` exactly; false when the seek lands elsewhere.
bool seekTo(int fd, long long offset)
{
    return offset >= 0 && ::lseek(fd, static_cast<off_t>(offset), SEEK_SET) == offset;
}

template <class Transfer> bool transferAll(Transfer transfer, int length)
{
    int done = 0;
    while (done < length)
    {
        ssize_t moved = transfer(done, length - done);
        if (moved < 0 && errno == EINTR)
            continue;
        if (moved <= 0)
            return false;
        done += static_cast<int>(moved);
    }
    return true;
}
} // namespace

extern "C"
{

    int pci_open(int bus, int device, int function, int flags)
    {
        Common::string name = Common::Platform::procBusPciFunction(bus, device, function);
        if (name.empty())
            return -1;
        return ::open(name.c_str(), flags | O_CLOEXEC);
    }

    int pci_close(int fd)
    {
        ::close(fd);
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
        char* into = static_cast<char*>(buffer);
        bool complete =
            seekTo(fd, offset) &&
            transferAll([&](int done, int left) { return ::read(fd, into + done, left); }, length);
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
        char const* from = static_cast<char const*>(buffer);
        bool complete =
            seekTo(fd, offset) &&
            transferAll([&](int done, int left) { return ::write(fd, from + done, left); }, length);
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
