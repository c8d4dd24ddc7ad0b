#pragma once

#include "platform/Hardware.h"
#include "sim/Machine.h"

#include <deque>
#include <optional>
#include <map>
#include <mutex>
#include <set>
#include <vector>

namespace Sim
{

// The hardware seam's simulated backend: every hardware effect of the
// module lands on `machine`, and every answer comes from it as it is at that
// moment: the files of "/proc" and "/sys" (sim/ProcTree.h), PCI
// configuration files (reads and writes go to the bridge's functions, so
// port writes show there and writes there show on the ports), and physical
// memory, mapped with the protection asked for. Port access counts on the
// machine's bridge; sleeping advances the machine's clock.
//
// Safe to use from several threads at once (the start-up job and a request
// thread): every call runs under one recursive lock, so a ROM service may
// call back in. Never linked into the product module: tests and the
// development shell only. install() makes it the process's backend, which can happen once per
// process, before the first hardware access.
class SimulatedHardware : public Common::Platform::Hardware
{
public:
    explicit SimulatedHardware(Machine& machine);
    ~SimulatedHardware() override;
    SimulatedHardware(SimulatedHardware const&) = delete;
    SimulatedHardware& operator=(SimulatedHardware const&) = delete;

    bool install();
    // Handles of "/dev/mem" opened and not closed yet.
    std::size_t openMemoryHandles() const
    {
        Held held(m_lock);
        return m_openMemory.size();
    }

    bool readFile(char const* fixedPath, Common::string& contents) override;
    bool listFolder(char const* fixedPath,
                    Common::list<Common::Platform::FolderEntry>& entries) override;

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

    // The IPMI device opens when the machine's management controller has its
    // node (sim/ManagementController.h); requests go to the controller, and
    // replies arrive in simulated time. Kernel modules and reboots are only
    // recorded; the node made with the major "/proc/devices" lists is the
    // controller's "/dev/ipmi0".
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
    std::uint32_t readPort(unsigned short port, unsigned width);
    void writePort(unsigned short port, unsigned width, std::uint32_t value);

    struct PendingReply
    {
        std::uint64_t readyAt;
        long msgid;
        IpmiRequest request;
        std::vector<std::uint8_t> bytes;
    };

    struct Mapping
    {
        std::uint8_t* begin;
        unsigned length;
        std::uint64_t address;
        bool executable;
    };
    // The physical address of `entry` when it lies in an executable mapping
    // that is still mapped.
    std::optional<std::uint64_t> executableAddress(void const* entry) const;

    struct OpenConfig
    {
        PciLocation at;
        bool writable;
    };
    // The function of an open configuration file with room for `length`
    // bytes at `offset`, or null.
    PciFunction* configFunction(int config, long long offset, unsigned length, bool write);

    using Held = std::lock_guard<std::recursive_mutex>;
    mutable std::recursive_mutex m_lock;
    Machine& m_machine;
    std::vector<Mapping> m_mappings;
    std::set<int> m_openIPMI;
    bool m_ipmiNodeMade = false;
    // Per open device, as the driver queues them: two threads with a device
    // each never receive each other's replies.
    std::map<int, std::deque<PendingReply>> m_replies;
    std::map<int, OpenConfig> m_openConfig;
    // Reads and listings of kernel files so far, for Faults::vanishingEvery.
    unsigned long m_kernelFileQuestions = 0;
    bool vanishes();
    std::set<int> m_openMemory;
    int m_nextHandle = 100;
    bool m_ioPrivilege = false;
};

} // namespace Sim
