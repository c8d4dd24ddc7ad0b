// Exercises the real hardware backend the way the module would on a machine
// where it lacks privileges, and prints what it found. Run by RealBackendTest
// as an unprivileged user; it refuses to run with I/O privilege or a readable
// "/dev/mem", so that it can never perform port I/O on the build machine.
#include "common/system/IO.h"
#include "common/system/Memory.h"
#include "common/system/NVRAM.h"
#include "common/system/PCI.h"
#include "common/system/RomSignature.h"
#include "common/system/SMBios.h"
#include "platform/Hardware.h"

#include <cstdio>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{
bool hasHardwareAccess()
{
    if (::syscall(SYS_iopl, 3) == 0)
    {
        ::syscall(SYS_iopl, 0);
        return true;
    }
    int memory = ::open("/dev/mem", O_RDONLY);
    if (memory < 0)
        return false;
    ::close(memory);
    return true;
}

unsigned countFunctions()
{
    Common::System::PCI::_PCI_ADDRESS at;
    Common::System::PCI::InitializeEnumerate(at);
    unsigned found = 0;
    while (Common::System::PCI::EnumerateDevice(at))
        ++found;
    return found;
}
} // namespace

int main()
{
    if (hasHardwareAccess())
    {
        std::printf("refused: this process may reach the hardware\n");
        return 3;
    }
    unsigned char bytes[16];
    std::printf("memory read: %s\n",
                Common::System::Memory::Read(0xF0000, bytes, 16) ? "yes" : "no");
    Common::System::SMBios smbios;
    std::printf("smbios supported: %s\n", smbios.supported() ? "yes" : "no");
    std::printf("total ram: %s\n", smbios.GetTotalRAM().c_str());
    std::printf("pci functions: %u\n", countFunctions());
    std::printf("nvram supported: %s\n", Common::System::NVRAM::Supported() ? "yes" : "no");
    std::printf("nvram signature: %s\n", IsNVRAMSupported() ? "yes" : "no");
    unsigned char port = 0;
    bool read = Common::System::IO::Read(0x80, port);
    std::printf("port 0x80: %s %02x\n", read ? "true" : "false", port);
    // Files the kernel shows to everyone, through the seam.
    Common::list<Common::Platform::FolderEntry> entries;
    bool listed = Common::Platform::hardware().listFolder("/proc/self", entries);
    std::printf("/proc/self entries: %d\n", listed ? static_cast<int>(entries.size()) : -1);
    Common::string devices;
    Common::Platform::hardware().readFile("/proc/devices", devices);
    std::printf("/proc/devices: %u bytes\n", devices.size());
    return 0;
}
