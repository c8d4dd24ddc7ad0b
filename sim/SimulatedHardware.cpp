#include "sim/SimulatedHardware.h"

#include "sim/ProcTree.h"

#include "platform/RomCall.h"

#include <algorithm>
#include <mutex>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <linux/ipmi.h>

namespace Sim
{

namespace fs = std::filesystem;

namespace
{
fs::path makeScratchRoot()
{
    std::string pattern = (fs::temp_directory_path() / "tidewell-sim-XXXXXX").string();
    char const* made = ::mkdtemp(pattern.data());
    return made != nullptr ? fs::path(made) : fs::path();
}
} // namespace

SimulatedHardware::SimulatedHardware(Machine& machine)
    : m_machine(machine), m_root(makeScratchRoot())
{
    refreshFiles();
}

SimulatedHardware::~SimulatedHardware()
{
    std::error_code ignored;
    if (!m_root.empty())
        fs::remove_all(m_root, ignored);
}

bool SimulatedHardware::install()
{
    return Common::Platform::Select(*this);
}

void SimulatedHardware::refreshFiles()
{
    Held held(m_lock);
    if (m_root.empty())
        return;
    std::error_code ignored;
    for (auto const& entry : fs::directory_iterator(m_root))
        fs::remove_all(entry.path(), ignored);
    ProcTree::write(m_machine, m_root);
}

Common::string SimulatedHardware::path(char const* fixedPath) const
{
    Held held(m_lock);
    return Common::string((m_root.string() + fixedPath).c_str());
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

void* SimulatedHardware::mapMemory(int memory, unsigned long long address, unsigned length, bool,
                                   bool executable)
{
    Held held(m_lock);
    if (m_openMemory.count(memory) == 0 || m_machine.faults().noMemoryMapping || length == 0 ||
        address % 4096 != 0 || !m_machine.memory().contains(address, length))
        return nullptr;
    std::uint8_t* mapping = m_machine.memory().at(address);
    m_mappings.push_back(Mapping{mapping, length, executable});
    return mapping;
}

bool SimulatedHardware::unmapMemory(void* mapping, unsigned length)
{
    Held held(m_lock);
    for (auto at = m_mappings.begin(); at != m_mappings.end(); ++at)
        if (at->begin == mapping && at->length == length)
        {
            m_mappings.erase(at);
            return true;
        }
    return false;
}

bool SimulatedHardware::executable(void const* entry) const
{
    auto const* at = static_cast<std::uint8_t const*>(entry);
    for (Mapping const& mapping : m_mappings)
        if (mapping.executable && at >= mapping.begin && at < mapping.begin + mapping.length)
            return true;
    return false;
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
    // Entry points are addresses inside mappings, which point straight into
    // the machine's memory. Only the code stub of a service is entered, and
    // only in the mode it returns for: anything else would crash the process,
    // so the machine refuses the call instead. The simulated server has no
    // handler of the system-management interrupt (mode 3).
    auto at = reinterpret_cast<std::uintptr_t>(entry);
    auto begin = reinterpret_cast<std::uintptr_t>(m_machine.memory().begin());
    Machine::RomEntry const* service =
        m_ioPrivilege && executable(entry) && at >= begin && at - begin < PhysicalMemory::kSize
            ? m_machine.romService(static_cast<std::uint32_t>(at - begin))
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

int SimulatedHardware::runShellCommand(char const* command)
{
    Held held(m_lock);
    m_machine.shellCommands().push_back(command);
    ManagementController const* controller = m_machine.managementController();
    if (controller != nullptr && controller->listedMajor &&
        m_machine.shellCommands().back() == "mknod -m 0600 /dev/ipmi0 c " +
                                                std::to_string(*controller->listedMajor) +
                                                " 0 1>/dev/null 2>/dev/null")
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
