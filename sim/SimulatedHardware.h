#pragma once

#include "platform/Hardware.h"
#include "sim/Machine.h"

#include <deque>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <vector>

namespace Sim
{

// The hardware seam's simulated backend: every hardware effect of the
// module lands on `machine`. Its fixed paths lie under a scratch root that
// holds the machine's "/proc" and "/sys" files (written on construction and
// by refreshFiles, removed on destruction). Port access counts on the
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
    // Rewrites the "/proc" and "/sys" files from the machine as it is now.
    void refreshFiles();
    std::filesystem::path const& root() const { return m_root; }
    // Handles of "/dev/mem" opened and not closed yet.
    std::size_t openMemoryHandles() const
    {
        Held held(m_lock);
        return m_openMemory.size();
    }

    Common::string path(char const* fixedPath) const override;

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
    // replies arrive in simulated time. Shell commands and reboots are only
    // recorded (the mknod command of the controller's node creates it).
    int openIPMI(char const* devicePath) override;
    void closeIPMI(int device) override;
    int sendIPMI(int device, ipmi_req& request) override;
    bool waitForIPMIReply(int device, unsigned timeoutMilliseconds) override;
    int receiveIPMI(int device, ipmi_recv& reply) override;

    int runShellCommand(char const* command) override;
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
        bool executable;
    };
    // Whether `entry` lies in an executable mapping that is still mapped.
    bool executable(void const* entry) const;

    using Held = std::lock_guard<std::recursive_mutex>;
    mutable std::recursive_mutex m_lock;
    Machine& m_machine;
    std::vector<Mapping> m_mappings;
    std::set<int> m_openIPMI;
    bool m_ipmiNodeMade = false;
    // Per open device, as the driver queues them: two threads with a device
    // each never receive each other's replies.
    std::map<int, std::deque<PendingReply>> m_replies;
    std::filesystem::path m_root;
    std::set<int> m_openMemory;
    int m_nextHandle = 100;
    bool m_ioPrivilege = false;
};

} // namespace Sim
