#include "common/system/NVRAM.h"

#include "common/StaticMutex.h"
#include "common/system/PCI.h"
#include "platform/Hardware.h"

namespace Common
{
namespace System
{

namespace
{
const unsigned short kVendor = 0x0E11;
const unsigned short kDevices[] = {0xA0F0, 0x00D7, 0xB203};
const unsigned int kProbeControl = 0xA6;
const unsigned int kScratch = 0x80;
const unsigned int kSemaphore = 0xE1;
const unsigned char kProbePattern = 0x55;
const unsigned long long kSemaphoreWait = 5000000; // microseconds
const unsigned int kSemaphorePoll = 1000;          // microseconds

const PCI::_PCI_ADDRESS kNoDevice = {0xFF, 0xFF, 0xFF, 0};

PCI::_PCI_ADDRESS s_nvramDevice = kNoDevice;
bool s_initialised = false;
// Guards the scan: the start-up job and a request may ask at once.
Synchronization::StaticMutex s_scan;
int s_locked = 0;

bool isNoDevice(const PCI::_PCI_ADDRESS& address)
{
    return address.bus == 0xFF && address.device == 0xFF && address.function == 0xFF;
}

bool hasControllerIDs(const PCI::_PCI_ADDRESS& address)
{
    unsigned short vendor;
    unsigned short device;
    if (!PCI::VendorID(address, vendor) || vendor == 0xFFFF || !PCI::DeviceID(address, device) ||
        device == 0xFFFF || vendor != kVendor)
        return false;
    for (unsigned short known : kDevices)
        if (device == known)
            return true;
    return false;
}

// The write/read-back test on s_nvramDevice, under the semaphore. The
// scratch byte is put back whatever the outcome. A semaphore that cannot be
// taken leaves the device untested.
bool scratchByteAnswers()
{
    if (!NVRAM::LockSemaphore())
        return false;
    PCI::Write(s_nvramDevice, kProbeControl, static_cast<unsigned short>(0));
    unsigned char kept = 0;
    PCI::Read(s_nvramDevice, kScratch, kept);
    PCI::Write(s_nvramDevice, kScratch, kProbePattern);
    unsigned char echoed = 0;
    bool answers = PCI::Read(s_nvramDevice, kScratch, echoed) && echoed == kProbePattern;
    PCI::Write(s_nvramDevice, kScratch, kept);
    NVRAM::UnlockSemaphore();
    return answers;
}

bool findController()
{
    for (int bus = 0; bus < 255; ++bus)
        for (int device = 0; device < 32; ++device)
        {
            PCI::_PCI_ADDRESS candidate = {static_cast<unsigned char>(bus),
                                           static_cast<unsigned char>(device), 0, 0};
            if (!hasControllerIDs(candidate))
                continue;
            s_nvramDevice = candidate;
            if (scratchByteAnswers())
                return true;
        }
    return false;
}

template <class Value> bool readLocked(unsigned int offset, Value& value)
{
    return NVRAM::Supported() && NVRAM::LockSemaphore() &&
           PCI::Read(s_nvramDevice, offset, value) && NVRAM::UnlockSemaphore();
}

template <class Value> bool writeLocked(unsigned int offset, const Value& value)
{
    return NVRAM::Supported() && NVRAM::LockSemaphore() &&
           PCI::Write(s_nvramDevice, offset, value) && NVRAM::UnlockSemaphore();
}
} // namespace

bool NVRAM::Supported()
{
    return s_scan.holding(
        []
        {
            if (!s_initialised)
            {
                // Set first: the semaphore calls of the probe ask Supported()
                // on this thread (the lock lets them in) and must see the
                // device under test as valid.
                s_initialised = true;
                if (!findController())
                    s_nvramDevice = kNoDevice;
            }
            return !isNoDevice(s_nvramDevice);
        });
}

bool NVRAM::LockSemaphore()
{
    if (!Supported())
        return false;
    if (s_locked != 0)
    {
        ++s_locked;
        return true;
    }
    Platform::Hardware& hardware = Platform::hardware();
    unsigned long long start = hardware.elapsedMicroseconds();
    unsigned char value = 0xFF;
    bool read = PCI::Read(s_nvramDevice, kSemaphore, value);
    while (read && value != 0 && hardware.elapsedMicroseconds() - start < kSemaphoreWait)
    {
        hardware.sleepMicroseconds(kSemaphorePoll);
        read = PCI::Read(s_nvramDevice, kSemaphore, value);
    }
    if (read && value == 0)
        ++s_locked;
    return s_locked != 0;
}

bool NVRAM::UnlockSemaphore()
{
    if (!Supported() || s_locked == 0)
        return false;
    if (--s_locked != 0)
        return true;
    return PCI::Write(s_nvramDevice, kSemaphore, static_cast<unsigned char>(0));
}

bool NVRAM::Read(const unsigned int& offset, unsigned char& value)
{
    return readLocked(offset, value);
}

bool NVRAM::Read(const unsigned int& offset, unsigned short& value)
{
    return readLocked(offset, value);
}

bool NVRAM::Read(const unsigned int& offset, unsigned int& value)
{
    return readLocked(offset, value);
}

bool NVRAM::Write(const unsigned int& offset, const unsigned char& value)
{
    return writeLocked(offset, value);
}

bool NVRAM::Write(const unsigned int& offset, const unsigned short& value)
{
    return writeLocked(offset, value);
}

bool NVRAM::Write(const unsigned int& offset, const unsigned int& value)
{
    return writeLocked(offset, value);
}

} // namespace System
} // namespace Common
