#pragma once

#include "common/List.h"
#include "platform/FolderEntry.h"

struct RomCallRegisters;
struct ipmi_req;
struct ipmi_recv;

namespace Common
{
namespace Platform
{

// The one seam through which every hardware effect of the module passes:
// physical memory, I/O privilege and ports, PCI configuration files, the
// IPMI device, ROM code, kernel modules and the IPMI device node, the files
// the kernel shows under /proc and /sys, the reboot call, and waits that
// exist only for hardware. Code above the seam never opens a path under
// /dev, /proc or /sys itself: each such access is a call here.
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

    // Files the kernel shows under "/proc" and "/sys", named by absolute path
    // ("/proc/devices", "/sys/block/sda/size"). readFile gives the whole
    // contents; listFolder the entries ("." and ".." left out) in the
    // kernel's order. Both are false when the file or folder is missing or
    // unreadable; the kernel may remove an entry between two calls.
    virtual bool readFile(char const* fixedPath, string& contents) = 0;
    virtual bool listFolder(char const* fixedPath, list<FolderEntry>& entries) = 0;

    // The configuration space of one PCI function through its kernel file
    // "/proc/bus/pci/BB/DD.F". openPCIConfig takes open(2) `flags` and gives
    // a handle (negative on failure, errno set); read and write move exactly
    // `length` bytes at `offset` or fail (the kernel's file is often shorter
    // than the function's space: 64 bytes for unprivileged readers).
    virtual int openPCIConfig(int bus, int device, int function, int flags) = 0;
    virtual bool readPCIConfig(int config, long long offset, void* buffer, unsigned length) = 0;
    virtual bool writePCIConfig(int config, long long offset, void const* buffer,
                                unsigned length) = 0;
    virtual void closePCIConfig(int config) = 0;

    // Physical memory, reached like the file "/dev/mem": open gives a handle
    // (negative on failure, errno set), which read, map and close take.
    // readMemory copies exactly `length` bytes from `address` or fails.
    // mapMemory wants a page-aligned `address`; it gives null on failure and
    // the mapping must be released with unmapMemory and the same length. ROM
    // code is entered only inside an `executable` mapping (current kernels
    // run no code from a mapping without execute permission), and a write
    // through a mapping that is not `writable` faults.
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

    // Loads the kernel module `name` ("modprobe"), and creates "/dev/ipmi0"
    // as the character device `major`, minor 0, readable and writable by its
    // owner only ("mknod"). A wrong major makes a node of another device;
    // `name` goes into the command unquoted: fixed names only.
    // The results are the commands' exit statuses as system() gives them.
    virtual int loadKernelModule(char const* name) = 0;
    virtual int makeIPMIDeviceNode(int major) = 0;

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
