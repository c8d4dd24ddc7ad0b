#include "platform/RealHardware.h"

#include "platform/PortInstructions.h"
#include "platform/RomCall.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <linux/ipmi.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Common
{
namespace Platform
{

namespace
{
char const kPhysicalMemory[] = "/dev/mem";
} // namespace

string RealHardware::path(char const* fixedPath) const
{
    return string(fixedPath);
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

int RealHardware::runShellCommand(char const* command)
{
    return std::system(command);
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
