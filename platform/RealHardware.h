#pragma once

#include "platform/Hardware.h"

namespace Common
{
namespace Platform
{

// The machine the process runs on: "/dev/mem", iopl(3) and the port
// instructions, the files of "/proc" and "/sys", the ROM, the kernel's IPMI
// driver, "modprobe" and "mknod" through system(), and reboot.
//
// Without privileges nothing crashes or hangs: "/dev/mem" fails to open,
// port access without I/O privilege executes no in/out instruction (reads
// give all ones), and ROM code is not entered.
class RealHardware : public Hardware
{
public:
    RealHardware() : m_ioPrivilege(false) {}

    bool readFile(char const* fixedPath, string& contents) override;
    bool listFolder(char const* fixedPath, list<FolderEntry>& entries) override;

    int openPCIConfig(int bus, int device, int function, int flags) override;
    bool readPCIConfig(int config, long long offset, void* buffer, unsigned length) override;
    bool writePCIConfig(int config, long long offset, void const* buffer, unsigned length) override;
    void closePCIConfig(int config) override;

    int openMemory(bool writable) override;
    bool readMemory(int memory, unsigned long long address, void* buffer, unsigned length) override;
    void* mapMemory(int memory, unsigned long long address, unsigned length, bool writable,
                    bool executable) override;
    bool unmapMemory(void* mapping, unsigned length) override;
    bool closeMemory(int memory) override;

    bool raiseIOPrivilege() override;
    unsigned char readPort8(unsigned short port) override;
    unsigned short readPort16(unsigned short port) override;
    unsigned int readPort32(unsigned short port) override;
    void writePort8(unsigned short port, unsigned char value) override;
    void writePort16(unsigned short port, unsigned short value) override;
    void writePort32(unsigned short port, unsigned int value) override;

    void callROM(RomCallRegisters& registers, void* entry, int mode) override;

    int openIPMI(char const* devicePath) override;
    void closeIPMI(int device) override;
    int sendIPMI(int device, ipmi_req& request) override;
    bool waitForIPMIReply(int device, unsigned timeoutMilliseconds) override;
    int receiveIPMI(int device, ipmi_recv& reply) override;

    int loadKernelModule(char const* name) override;
    int makeIPMIDeviceNode(int major) override;
    int reboot(int magic, int magic2, int command) override;

    void sleepMicroseconds(unsigned int microseconds) override;
    unsigned long long elapsedMicroseconds() override;

private:
    // Set by raiseIOPrivilege; port instructions run only while it is true.
    bool m_ioPrivilege;
};

} // namespace Platform
} // namespace Common
