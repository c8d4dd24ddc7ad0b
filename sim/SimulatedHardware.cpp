#include "sim/SimulatedHardware.h"

#include "sim/ProcTree.h"

#include "platform/RomCall.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/ipmi.h>
#include <mutex>
#include <sys/mman.h>

namespace Sim
{

SimulatedHardware::SimulatedHardware(Machine& machine) : m_machine(machine) {}

SimulatedHardware::~SimulatedHardware()
{
    for (Mapping const& mapping : m_mappings)
        ::munmap(mapping.begin, mapping.length);
}

bool SimulatedHardware::install()
{
    return Common::Platform::Select(*this);
}

bool SimulatedHardware::vanishes()
{
    unsigned every = m_machine.faults().vanishingEvery;
    return every != 0 && ++m_kernelFileQuestions % every == 0;
}

bool SimulatedHardware::readFile(char const* fixedPath, Common::string& contents)
{
    Held held(m_lock);
    std::string read;
    if (vanishes() || !ProcTree::read(m_machine, fixedPath, read))
    {
        errno = ENOENT;
        return false;
    }
    contents = Common::string(read.data(), static_cast<unsigned>(read.size()));
    return true;
}

bool SimulatedHardware::listFolder(char const* fixedPath,
                                   Common::list<Common::Platform::FolderEntry>& entries)
{
    Held held(m_lock);
    entries.clear();
    std::vector<ProcTree::Entry> found;
    if (vanishes() || !ProcTree::list(m_machine, fixedPath, found))
    {
        errno = ENOENT;
        return false;
    }
    for (ProcTree::Entry const& entry : found)
        entries.push_back(Common::Platform::FolderEntry{Common::string(entry.name.c_str()),
                                                        entry.folder, entry.symbolicLink});
    return true;
}

int SimulatedHardware::openPCIConfig(int bus, int device, int function, int flags)
{
    Held held(m_lock);
    bool inRange = bus >= 0 && bus < 256 && device >= 0 && device < 32 && function >= 0 &&
                   function < 8;
    PciLocation at{static_cast<std::uint8_t>(bus), static_cast<std::uint8_t>(device),
                   static_cast<std::uint8_t>(function)};
    if (m_machine.faults().noProcBusPci || !inRange || m_machine.bridge().find(at) == nullptr)
    {
        errno = ENOENT;
        return -1;
    }
    m_openConfig[m_nextHandle] = OpenConfig{at, (flags & O_ACCMODE) != O_RDONLY};
    return m_nextHandle++;
}

PciFunction* SimulatedHardware::configFunction(int config, long long offset, unsigned length,
                                               bool write)
{
    auto open = m_openConfig.find(config);
    if (open == m_openConfig.end() || (write && !open->second.writable) || offset < 0)
    {
        errno = EBADF;
        return nullptr;
    }
    PciFunction* function = m_machine.bridge().find(open->second.at);
    // As the kernel's file: a transfer past its end falls short.
    unsigned size = function == nullptr ? 0 : std::min(function->procFileSize(), 256u);
    if (function == nullptr || static_cast<unsigned long long>(offset) + length > size)
        return nullptr;
    return function;
}

namespace
{
// The widths the kernel moves configuration bytes in: aligned double words
// and words where they fit, else single bytes.
unsigned chunk(unsigned offset, unsigned left)
{
    if (offset % 4 == 0 && left >= 4)
        return 4;
    if (offset % 2 == 0 && left >= 2)
        return 2;
    return 1;
}
} // namespace

bool SimulatedHardware::readPCIConfig(int config, long long offset, void* buffer, unsigned length)
{
    Held held(m_lock);
    PciFunction* function = configFunction(config, offset, length, false);
    if (function == nullptr)
        return false;
    auto* into = static_cast<std::uint8_t*>(buffer);
    for (unsigned done = 0, width; done < length; done += width)
    {
        unsigned at = static_cast<unsigned>(offset) + done;
        width = chunk(at, length - done);
        std::uint32_t value = function->read(static_cast<std::uint8_t>(at), width);
        for (unsigned byte = 0; byte < width; ++byte)
            into[done + byte] = static_cast<std::uint8_t>(value >> (8 * byte));
    }
    return true;
}

bool SimulatedHardware::writePCIConfig(int config, long long offset, void const* buffer,
                                       unsigned length)
{
    Held held(m_lock);
    PciFunction* function = configFunction(config, offset, length, true);
    if (function == nullptr)
        return false;
    auto const* from = static_cast<std::uint8_t const*>(buffer);
    for (unsigned done = 0, width; done < length; done += width)
    {
        unsigned at = static_cast<unsigned>(offset) + done;
        width = chunk(at, length - done);
        std::uint32_t value = 0;
        for (unsigned byte = 0; byte < width; ++byte)
            value |= static_cast<std::uint32_t>(from[done + byte]) << (8 * byte);
        function->write(static_cast<std::uint8_t>(at), width, value);
    }
    return true;
}

void SimulatedHardware::closePCIConfig(int config)
{
    Held held(m_lock);
    m_openConfig.erase(config);
}

int SimulatedHardware::openMemory(bool)
{
    Held held(m_lock);
    if (m_machine.faults().noPhysicalMemory)
    {
        errno = EACCES;
        return -1;
    }
    m_openMemory.insert(m_nextHandle);
    return m_nextHandle++;
}

bool SimulatedHardware::readMemory(int memory, unsigned long long address, void* buffer,
                                   unsigned length)
{
    Held held(m_lock);
    if (m_openMemory.count(memory) == 0 || !m_machine.memory().contains(address, length))
        return false;
    std::memcpy(buffer, m_machine.memory().at(address), length);
    return true;
}

void* SimulatedHardware::mapMemory(int memory, unsigned long long address, unsigned length,
                                   bool writable, bool executable)
{
    Held held(m_lock);
    if (m_openMemory.count(memory) == 0 || m_machine.faults().noMemoryMapping || length == 0 ||
        address % 4096 != 0 || !m_machine.memory().contains(address, length))
        return nullptr;
    auto* mapping =
        static_cast<std::uint8_t*>(m_machine.memory().map(address, length, writable, executable));
    if (mapping != nullptr)
        m_mappings.push_back(Mapping{mapping, length, address, executable});
    return mapping;
}

bool SimulatedHardware::unmapMemory(void* mapping, unsigned length)
{
    Held held(m_lock);
    for (auto at = m_mappings.begin(); at != m_mappings.end(); ++at)
        if (at->begin == mapping && at->length == length)
        {
            m_mappings.erase(at);
            return ::munmap(mapping, length) == 0;
        }
    return false;
}

std::optional<std::uint64_t> SimulatedHardware::executableAddress(void const* entry) const
{
    auto const* at = static_cast<std::uint8_t const*>(entry);
    for (Mapping const& mapping : m_mappings)
        if (mapping.executable && at >= mapping.begin && at < mapping.begin + mapping.length)
            return mapping.address + static_cast<std::uint64_t>(at - mapping.begin);
    return std::nullopt;
}

bool SimulatedHardware::closeMemory(int memory)
{
    Held held(m_lock);
    return m_openMemory.erase(memory) == 1;
}

bool SimulatedHardware::raiseIOPrivilege()
{
    Held held(m_lock);
    m_ioPrivilege = !m_machine.faults().noIOPrivilege;
    return m_ioPrivilege;
}

std::uint32_t SimulatedHardware::readPort(unsigned short port, unsigned width)
{
    Held held(m_lock);
    return m_ioPrivilege ? m_machine.readPort(port, width) : HostBridge::allOnes(width);
}

void SimulatedHardware::writePort(unsigned short port, unsigned width, std::uint32_t value)
{
    Held held(m_lock);
    if (m_ioPrivilege)
        m_machine.writePort(port, width, value);
}

unsigned char SimulatedHardware::readPort8(unsigned short port)
{
    return static_cast<unsigned char>(readPort(port, 1));
}

unsigned short SimulatedHardware::readPort16(unsigned short port)
{
    return static_cast<unsigned short>(readPort(port, 2));
}

unsigned int SimulatedHardware::readPort32(unsigned short port)
{
    return readPort(port, 4);
}

void SimulatedHardware::writePort8(unsigned short port, unsigned char value)
{
    writePort(port, 1, value);
}

void SimulatedHardware::writePort16(unsigned short port, unsigned short value)
{
    writePort(port, 2, value);
}

void SimulatedHardware::writePort32(unsigned short port, unsigned int value)
{
    writePort(port, 4, value);
}

void SimulatedHardware::callROM(RomCallRegisters& registers, void* entry, int mode)
{
    Held held(m_lock);
    // Entry points are addresses inside executable mappings of the machine's
    // memory. Only the code stub of a service is entered, and only in the
    // mode it returns for: anything else would crash the process, so the
    // machine refuses the call instead. The simulated server has no handler
    // of the system-management interrupt (mode 3).
    std::optional<std::uint64_t> address = executableAddress(entry);
    Machine::RomEntry const* service =
        m_ioPrivilege && address ? m_machine.romService(static_cast<std::uint32_t>(*address))
                                 : nullptr;
    int expected = service == nullptr ? 0 : service->returns == RomReturn::Interrupt ? 1 : 2;
    if (expected == 0 || mode != expected)
        return registers.refuse();
    rom_call(&registers, entry, mode);
}

int SimulatedHardware::openIPMI(char const* devicePath)
{
    Held held(m_lock);
    ManagementController const* controller = m_machine.managementController();
    std::string path = devicePath != nullptr ? devicePath : "";
    bool opens = controller != nullptr &&
                 ((!controller->node.empty() && path == controller->node) ||
                  (controller->nodeAfterLoading && m_ipmiNodeMade && path == "/dev/ipmi0"));
    if (!opens)
    {
        errno = ENOENT;
        return -1;
    }
    m_openIPMI.insert(m_nextHandle);
    return m_nextHandle++;
}

void SimulatedHardware::closeIPMI(int device)
{
    Held held(m_lock);
    m_openIPMI.erase(device);
    m_replies.erase(device);
}

int SimulatedHardware::sendIPMI(int device, ipmi_req& request)
{
    Held held(m_lock);
    ManagementController* controller = m_machine.managementController();
    if (m_openIPMI.count(device) == 0 || controller == nullptr)
    {
        errno = EBADF;
        return -1;
    }
    IpmiRequest received;
    ipmi_system_interface_addr address = {};
    if (request.addr != nullptr && request.addr_len >= sizeof address)
    {
        std::memcpy(&address, request.addr, sizeof address);
        received.addressType = address.addr_type;
        received.channel = address.channel;
        received.lun = address.lun;
    }
    received.netfn = request.msg.netfn;
    received.cmd = request.msg.cmd;
    if (request.msg.data != nullptr)
        received.data.assign(request.msg.data, request.msg.data + request.msg.data_len);
    std::optional<std::vector<std::uint8_t>> reply = controller->answer(received);
    if (reply)
        m_replies[device].push_back({m_machine.clock().now() + controller->replyDelayMicroseconds,
                             request.msgid, received, *reply});
    return 0;
}

bool SimulatedHardware::waitForIPMIReply(int device, unsigned timeoutMilliseconds)
{
    Held held(m_lock);
    if (m_openIPMI.count(device) == 0)
        return false;
    std::deque<PendingReply> const& replies = m_replies[device];
    std::uint64_t now = m_machine.clock().now();
    std::uint64_t deadline = now + timeoutMilliseconds * 1000ull;
    if (!replies.empty() && replies.front().readyAt <= deadline)
    {
        if (replies.front().readyAt > now)
            m_machine.clock().advance(replies.front().readyAt - now);
        return true;
    }
    m_machine.clock().advance(deadline - now);
    return false;
}

int SimulatedHardware::receiveIPMI(int device, ipmi_recv& reply)
{
    Held held(m_lock);
    if (m_openIPMI.count(device) == 0)
    {
        errno = EBADF;
        return -1;
    }
    std::deque<PendingReply>& replies = m_replies[device];
    if (replies.empty() || replies.front().readyAt > m_machine.clock().now())
    {
        errno = EAGAIN;
        return -1;
    }
    PendingReply pending = replies.front();
    replies.pop_front();
    ipmi_system_interface_addr address = {IPMI_SYSTEM_INTERFACE_ADDR_TYPE,
                                          static_cast<short>(pending.request.channel),
                                          static_cast<unsigned char>(pending.request.lun)};
    std::size_t addressLength = std::min<std::size_t>(reply.addr_len, sizeof address);
    if (reply.addr != nullptr)
        std::memcpy(reply.addr, &address, addressLength);
    reply.addr_len = static_cast<unsigned>(addressLength);
    reply.recv_type = IPMI_RESPONSE_RECV_TYPE;
    reply.msgid = pending.msgid;
    reply.msg.netfn = static_cast<unsigned char>(pending.request.netfn | 1);
    reply.msg.cmd = pending.request.cmd;
    // As the driver's truncating receive: an over-long reply is cut to the
    // buffer, and the call reports EMSGSIZE.
    std::size_t length = std::min<std::size_t>(pending.bytes.size(), reply.msg.data_len);
    if (reply.msg.data != nullptr && length > 0)
        std::memcpy(reply.msg.data, pending.bytes.data(), length);
    reply.msg.data_len = static_cast<unsigned short>(length);
    if (length < pending.bytes.size())
    {
        errno = EMSGSIZE;
        return -1;
    }
    return 0;
}

int SimulatedHardware::loadKernelModule(char const* name)
{
    Held held(m_lock);
    m_machine.recordKernelModule(name);
    return 0;
}

int SimulatedHardware::makeIPMIDeviceNode(int major)
{
    Held held(m_lock);
    if (major < 0)
        return 1 << 8; // mknod's exit status 1
    m_machine.recordIPMINode(static_cast<unsigned>(major));
    ManagementController const* controller = m_machine.managementController();
    if (controller != nullptr && controller->listedMajor &&
        *controller->listedMajor == static_cast<unsigned>(major))
        m_ipmiNodeMade = true;
    return 0;
}

int SimulatedHardware::reboot(int magic, int magic2, int command)
{
    Held held(m_lock);
    m_machine.recordReboot({magic, magic2, command, m_machine.clock().now()});
    return 0;
}

void SimulatedHardware::sleepMicroseconds(unsigned int microseconds)
{
    Held held(m_lock);
    m_machine.clock().advance(microseconds);
}

unsigned long long SimulatedHardware::elapsedMicroseconds()
{
    Held held(m_lock);
    return m_machine.clock().now();
}

} // namespace Sim
