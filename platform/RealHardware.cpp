#include "platform/RealHardware.h"

#include "common/filesystem/Filesystem.h"
#include "platform/PortInstructions.h"
#include "platform/RomCall.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <linux/ipmi.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Common
{
namespace Platform
{

namespace
{
char const kPhysicalMemory[] = "/dev/mem";

// Positions `fd` at `offset` exactly; false when the seek lands elsewhere.
bool seekTo(int fd, long long offset)
{
    return offset >= 0 && ::lseek(fd, static_cast<off_t>(offset), SEEK_SET) == offset;
}

// Repeats `transfer(done)` (a read or write of the rest) until `length`
// bytes have moved; false at an end of file or an error.
template <class Transfer> bool transferAll(Transfer transfer, unsigned length)
{
    unsigned done = 0;
    while (done < length)
    {
        ssize_t moved = transfer(done);
        if (moved < 0 && errno == EINTR)
            continue;
        if (moved <= 0)
            return false;
        done += static_cast<unsigned>(moved);
    }
    return true;
}

// Runs `command` through the shell with its output discarded.
int quietly(char const* command)
{
    char line[128];
    int written = std::snprintf(line, sizeof line, "%s 1>/dev/null 2>/dev/null", command);
    if (written < 0 || static_cast<unsigned>(written) >= sizeof line)
        return -1;
    return std::system(line);
}
} // namespace

bool RealHardware::readFile(char const* fixedPath, string& contents)
{
    contents.clear();
    return Filesystem::getContents(fixedPath, contents);
}

bool RealHardware::listFolder(char const* fixedPath, list<FolderEntry>& entries)
{
    entries.clear();
    DIR* folder = ::opendir(fixedPath);
    if (folder == nullptr)
        return false;
    while (dirent* entry = ::readdir(folder))
    {
        if (std::strcmp(entry->d_name, ".") == 0 || std::strcmp(entry->d_name, "..") == 0)
            continue;
        bool isFolder = entry->d_type == DT_DIR;
        bool isLink = entry->d_type == DT_LNK;
        struct stat status;
        if (entry->d_type == DT_UNKNOWN &&
            ::fstatat(::dirfd(folder), entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0)
        {
            isFolder = S_ISDIR(status.st_mode);
            isLink = S_ISLNK(status.st_mode);
        }
        entries.push_back(FolderEntry{string(entry->d_name), isFolder, isLink});
    }
    ::closedir(folder);
    return true;
}

int RealHardware::openPCIConfig(int bus, int device, int function, int flags)
{
    char name[64];
    std::snprintf(name, sizeof name, "/proc/bus/pci/%2.2x/%2.2x.%1.1x", bus, device, function);
    return ::open(name, flags | O_CLOEXEC);
}

bool RealHardware::readPCIConfig(int config, long long offset, void* buffer, unsigned length)
{
    char* into = static_cast<char*>(buffer);
    return seekTo(config, offset) &&
           transferAll([&](unsigned done) { return ::read(config, into + done, length - done); },
                       length);
}

bool RealHardware::writePCIConfig(int config, long long offset, void const* buffer,
                                  unsigned length)
{
    char const* from = static_cast<char const*>(buffer);
    return seekTo(config, offset) &&
           transferAll([&](unsigned done) { return ::write(config, from + done, length - done); },
                       length);
}

void RealHardware::closePCIConfig(int config)
{
    ::close(config);
}

int RealHardware::openMemory(bool writable)
{
    return ::open(kPhysicalMemory, (writable ? O_RDWR : O_RDONLY) | O_CLOEXEC);
}

bool RealHardware::readMemory(int memory, unsigned long long address, void* buffer, unsigned length)
{
    off_t position = static_cast<off_t>(address);
    if (::lseek(memory, position, SEEK_SET) != position)
        return false;
    char* into = static_cast<char*>(buffer);
    while (length > 0)
    {
        ssize_t got = ::read(memory, into, length);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        into += got;
        length -= static_cast<unsigned>(got);
    }
    return true;
}

void* RealHardware::mapMemory(int memory, unsigned long long address, unsigned length,
                              bool writable, bool executable)
{
    int protection = PROT_READ | (writable ? PROT_WRITE : 0) | (executable ? PROT_EXEC : 0);
    void* mapping =
        ::mmap(nullptr, length, protection, MAP_SHARED, memory, static_cast<off_t>(address));
    return mapping == MAP_FAILED ? nullptr : mapping;
}

bool RealHardware::unmapMemory(void* mapping, unsigned length)
{
    return ::munmap(mapping, length) == 0;
}

bool RealHardware::closeMemory(int memory)
{
    return ::close(memory) == 0;
}

bool RealHardware::raiseIOPrivilege()
{
    m_ioPrivilege = ::syscall(SYS_iopl, 3) == 0;
    return m_ioPrivilege;
}

unsigned char RealHardware::readPort8(unsigned short port)
{
    return m_ioPrivilege ? inb(port) : 0xFF;
}

unsigned short RealHardware::readPort16(unsigned short port)
{
    return m_ioPrivilege ? inw(port) : 0xFFFF;
}

unsigned int RealHardware::readPort32(unsigned short port)
{
    return m_ioPrivilege ? inl(port) : 0xFFFFFFFFu;
}

void RealHardware::writePort8(unsigned short port, unsigned char value)
{
    if (m_ioPrivilege)
        outb(value, port);
}

void RealHardware::writePort16(unsigned short port, unsigned short value)
{
    if (m_ioPrivilege)
        outw(value, port);
}

void RealHardware::writePort32(unsigned short port, unsigned int value)
{
    if (m_ioPrivilege)
        outl(value, port);
}

void RealHardware::callROM(RomCallRegisters& registers, void* entry, int mode)
{
    bool callable = mode == 3 || ((mode == 1 || mode == 2) && entry != nullptr);
    if (!m_ioPrivilege || !callable)
    {
        registers.refuse();
        return;
    }
    rom_call(&registers, entry, mode);
}

int RealHardware::openIPMI(char const* devicePath)
{
    return ::open(devicePath, O_RDWR | O_CLOEXEC);
}

void RealHardware::closeIPMI(int device)
{
    ::close(device);
}

int RealHardware::sendIPMI(int device, ipmi_req& request)
{
    return ::ioctl(device, IPMICTL_SEND_COMMAND, &request);
}

bool RealHardware::waitForIPMIReply(int device, unsigned timeoutMilliseconds)
{
    unsigned long long deadline = elapsedMicroseconds() + timeoutMilliseconds * 1000ull;
    for (;;)
    {
        unsigned long long now = elapsedMicroseconds();
        int left = now >= deadline ? 0 : static_cast<int>((deadline - now + 999) / 1000);
        pollfd watched = {device, POLLIN, 0};
        int ready = ::poll(&watched, 1, left);
        if (ready < 0 && errno == EINTR)
            continue;
        return ready > 0 && (watched.revents & POLLIN) != 0;
    }
}

int RealHardware::receiveIPMI(int device, ipmi_recv& reply)
{
    return ::ioctl(device, IPMICTL_RECEIVE_MSG_TRUNC, &reply);
}

int RealHardware::loadKernelModule(char const* name)
{
    char command[96];
    int written = std::snprintf(command, sizeof command, "modprobe %s", name);
    if (written < 0 || static_cast<unsigned>(written) >= sizeof command)
        return -1;
    return quietly(command);
}

int RealHardware::makeIPMIDeviceNode(int major)
{
    char command[64];
    std::snprintf(command, sizeof command, "mknod -m 0600 /dev/ipmi0 c %d 0", major);
    return quietly(command);
}

int RealHardware::reboot(int magic, int magic2, int command)
{
    return static_cast<int>(::syscall(SYS_reboot, magic, magic2, command, nullptr));
}

void RealHardware::sleepMicroseconds(unsigned int microseconds)
{
    timespec left = {static_cast<time_t>(microseconds / 1000000u),
                     static_cast<long>(microseconds % 1000000u) * 1000L};
    while (::nanosleep(&left, &left) != 0 && errno == EINTR)
    {
    }
}

unsigned long long RealHardware::elapsedMicroseconds()
{
    timespec now;
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<unsigned long long>(now.tv_sec) * 1000000ull +
           static_cast<unsigned long long>(now.tv_nsec) / 1000ull;
}

} // namespace Platform
} // namespace Common
