#pragma once

#include "common/String.h"

struct RomCallRegisters;
struct ipmi_req;
struct ipmi_recv;

namespace Common
{
namespace Platform
{

// The one seam through which every hardware effect of the module passes:
// physical memory, I/O privilege and ports, the IPMI device, ROM code, the
// shell commands that load kernel modules and create device nodes, the reboot
// call, waits that exist only for hardware, and the fixed paths under /dev,
// /proc and /sys.
//
// Two backends implement it: the real machine (platform/RealHardware) and the
// simulated server (sim/). One of them serves the whole process; it is chosen
// once, before the first hardware access, and never by probing. Code above the
// seam is the same for both.
//
// Every entry reports failure by its return value; none throws.
class Hardware
{
public:
    virtual ~Hardware() {}

    // `fixedPath` (an absolute path such as "/proc/bus/pci") as this backend
    // places it: unchanged on the real machine, under a scratch root on the
    // simulated one.
    virtual string path(char const* fixedPath) const = 0;

    // Physical memory, reached like the file "/dev/mem": open gives a handle
    // (negative on failure, errno set), which read, map and close take.
    // readMemory copies exactly `length` bytes from `address` or fails.
    // mapMemory wants a page-aligned `address`; it gives null on failure and
    // the mapping must be released with unmapMemory and the same length. ROM
    // code is entered only inside an `executable` mapping (current kernels
    // run no code from a mapping without execute permission).
    virtual int openMemory(bool writable) = 0;
    virtual bool readMemory(int memory, unsigned long long address, void* buffer,
                            unsigned length) = 0;
    virtual void* mapMemory(int memory, unsigned long long address, unsigned length, bool writable,
                            bool executable) = 0;
    virtual bool unmapMemory(void* mapping, unsigned length) = 0;
    virtual bool closeMemory(int memory) = 0;

    // Raises the process's I/O privilege level to 3; true when it holds it.
    // Port access without the privilege touches no port: reads give all ones
    // and writes are dropped.
    virtual bool raiseIOPrivilege() = 0;
    virtual unsigned char readPort8(unsigned short port) = 0;
    virtual unsigned short readPort16(unsigned short port) = 0;
    virtual unsigned int readPort32(unsigned short port) = 0;
    virtual void writePort8(unsigned short port, unsigned char value) = 0;
    virtual void writePort16(unsigned short port, unsigned short value) = 0;
    virtual void writePort32(unsigned short port, unsigned int value) = 0;

    // Enters ROM code at `entry` (an address inside a mapping from mapMemory)
    // with the register block, in call mode 1 (returns with IRET), 2 (far
    // return) or 3 (system-management interrupt, `entry` unused), and stores
    // the registers the ROM left back into the block.
    virtual void callROM(RomCallRegisters& registers, void* entry, int mode) = 0;

    // The IPMI driver's character device. openIPMI gives a handle or a
    // negative value; send and receive return the ioctl's result; the wait
    // blocks until a reply can be received, at most `timeoutMilliseconds`
    // (resumed when a signal interrupts it), and is false when none came.
    virtual int openIPMI(char const* devicePath) = 0;
    virtual void closeIPMI(int device) = 0;
    virtual int sendIPMI(int device, ipmi_req& request) = 0;
    virtual bool waitForIPMIReply(int device, unsigned timeoutMilliseconds) = 0;
    virtual int receiveIPMI(int device, ipmi_recv& reply) = 0;

    // Runs a command through the system shell (module loading, device nodes);
    // the result is system()'s.
    virtual int runShellCommand(char const* command) = 0;

    // The reboot system call; returns only when it fails.
    virtual int reboot(int magic, int magic2, int command) = 0;

    // Waits for the hardware: sleeping, and a clock that only moves forward.
    virtual void sleepMicroseconds(unsigned int microseconds) = 0;
    virtual unsigned long long elapsedMicroseconds() = 0;
};

// The backend of this process: the one given to Select, else the real one.
// The first call fixes the choice for the rest of the process.
Hardware& hardware();

// Chooses `backend` for this process; false (and no change) once hardware()
// has been called. `backend` must outlive every hardware access. The product
// module never calls this: only the simulated server does.
bool Select(Hardware& backend);

} // namespace Platform
} // namespace Common
