#include "common/system/IPMI.h"

#include "common/List.h"
#include "common/StaticMutex.h"
#include "platform/Hardware.h"

#include <cstdio>
#include <cstring>
#include <linux/ipmi.h>

namespace Common
{

namespace
{
char const* const kDeviceNodes[] = {"/dev/ipmi0", "/dev/ipmidev/0", "/dev/ipmi/0"};
char const* const kDriverModules[] = {"ipmi_msghandler", "ipmi_si", "ipmi_devintf",
                                      "ipmi_watchdog"};
const unsigned int kDriverWaitMicroseconds = 3000000;
const unsigned int kReplyTimeoutMilliseconds = 5000;
const unsigned int kAddressBufferSize = 40;
const unsigned int kDataBufferSize = 272;

// The major number "/proc/devices" lists for "ipmidev" among the character
// devices (the kernel assigns it when the module loads); -1 when none.
int ipmiMajor()
{
    string devices;
    if (!Platform::hardware().readFile("/proc/devices", devices))
        return -1;
    list<string> lines = devices.split("\n");
    for (list<string>::const_iterator line = lines.begin(); line != lines.end(); ++line)
    {
        if (line->find("Block devices:") == 0)
            break;
        int number = -1;
        char name[64] = {};
        if (std::sscanf(line->c_str(), "%d %63s", &number, name) == 2 &&
            std::strcmp(name, "ipmidev") == 0 && number >= 0)
            return number;
    }
    return -1;
}

// The cached answer of supported(): a true one is kept, a false one only
// answers the callers that waited for the probe that gave it.
Synchronization::StaticMutex s_supportedCheck;
bool s_supported = false;
bool s_lastAnswer = false;
unsigned int s_probes = 0;
} // namespace

IPMI::IPMI() : m_device(-1)
{
    for (int round = 0; round < 2 && m_device < 0; ++round)
    {
        m_device = openDevice();
        if (m_device < 0)
            loadDriver();
    }
}

IPMI::~IPMI()
{
    if (m_device >= 0)
        Platform::hardware().closeIPMI(m_device);
}

int IPMI::openDevice()
{
    int device = -1;
    for (unsigned i = 0; device < 0 && i < sizeof kDeviceNodes / sizeof kDeviceNodes[0]; ++i)
        device = Platform::hardware().openIPMI(kDeviceNodes[i]);
    return device;
}

void IPMI::loadDriver()
{
    Platform::Hardware& hardware = Platform::hardware();
    for (unsigned i = 0; i < sizeof kDriverModules / sizeof kDriverModules[0]; ++i)
        hardware.loadKernelModule(kDriverModules[i]);
    // Without a listed major the node could only be made with a guess, and a
    // wrong major makes a node of another device.
    int major = ipmiMajor();
    if (major >= 0)
        hardware.makeIPMIDeviceNode(major);
    hardware.sleepMicroseconds(kDriverWaitMicroseconds);
}

bool IPMI::execute(unsigned char netfn, unsigned char cmd, unsigned char lun,
                   const unsigned char* request, const unsigned char& requestLength,
                   unsigned char* response, const unsigned char& responseLength)
{
    unsigned char received = 0;
    return exchange(netfn, cmd, lun, request, requestLength, response, responseLength, received);
}

bool IPMI::exchange(unsigned char netfn, unsigned char cmd, unsigned char lun,
                    const unsigned char* request, const unsigned char& requestLength,
                    unsigned char* response, const unsigned char& responseLength,
                    unsigned char& copied)
{
    copied = 0;
    if (m_device < 0)
        return false;
    Platform::Hardware& hardware = Platform::hardware();

    ipmi_system_interface_addr address;
    std::memset(&address, 0, sizeof address);
    address.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
    address.channel = IPMI_BMC_CHANNEL;
    address.lun = lun;
    ipmi_req sent;
    std::memset(&sent, 0, sizeof sent);
    sent.addr = reinterpret_cast<unsigned char*>(&address);
    sent.addr_len = sizeof address;
    sent.msg.netfn = netfn;
    sent.msg.cmd = cmd;
    if (requestLength != 0)
    {
        // The driver only reads the data.
        sent.msg.data = const_cast<unsigned char*>(request);
        sent.msg.data_len = requestLength;
    }
    if (hardware.sendIPMI(m_device, sent) != 0)
        return false;
    if (!hardware.waitForIPMIReply(m_device, kReplyTimeoutMilliseconds))
        return false;

    unsigned char from[kAddressBufferSize];
    unsigned char data[kDataBufferSize];
    ipmi_recv received;
    std::memset(&received, 0, sizeof received);
    received.addr = from;
    received.addr_len = sizeof from;
    received.msg.data = data;
    received.msg.data_len = sizeof data;
    if (hardware.receiveIPMI(m_device, received) < 0)
        return false;
    unsigned int length =
        received.msg.data_len < responseLength ? received.msg.data_len : responseLength;
    if (response != nullptr && length > 0)
    {
        std::memcpy(response, data, length);
        copied = static_cast<unsigned char>(length);
    }
    return true;
}

bool IPMI::execute(unsigned char netfn, unsigned char cmd, const unsigned char* request,
                   const unsigned char& requestLength, unsigned char* response,
                   const unsigned char& responseLength)
{
    return execute(netfn, cmd, 0, request, requestLength, response, responseLength);
}

bool IPMI::execute(unsigned char netfn, unsigned char cmd, const unsigned char* request,
                   const unsigned char& requestLength, unsigned char* response,
                   const unsigned char& responseLength, unsigned char& received)
{
    return exchange(netfn, cmd, 0, request, requestLength, response, responseLength, received);
}

bool IPMI::supported()
{
    // Counted before waiting: a probe that another thread finished meanwhile
    // is this caller's answer too, so a request that meets the start-up job's
    // probe of a machine without a controller waits for it once, not twice.
    const unsigned int probesBefore = __atomic_load_n(&s_probes, __ATOMIC_ACQUIRE);
    return s_supportedCheck.holding(
        [probesBefore]
        {
            if (s_supported || s_probes != probesBefore)
                return s_lastAnswer;
            IPMI ipmi;
            unsigned char response[16];
            std::memset(response, 0xFF, sizeof response);
            const unsigned char none = 0;
            const unsigned char capacity = sizeof response;
            s_lastAnswer =
                ipmi.execute(0x06, 0x01, nullptr, none, response, capacity) && response[0] == 0;
            s_supported = s_lastAnswer;
            __atomic_store_n(&s_probes, s_probes + 1, __ATOMIC_RELEASE);
            return s_lastAnswer;
        });
}

} // namespace Common
