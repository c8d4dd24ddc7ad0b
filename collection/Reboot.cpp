#include "collection/Reboot.h"

#include "collection/ColdReset.h"
#include "common/system/NVRAM.h"
#include "platform/Hardware.h"

namespace Collection
{

namespace
{
const unsigned char kBootFlagsParameter = 5;
const unsigned char kValidForNextBootOnly = 0x80;
const unsigned char kSelectorBits = 0x3C;
const unsigned int kSettleMicroseconds = 2000000;

const int kRebootMagic = static_cast<int>(0xFEE1DEAD);
const int kRebootMagic2 = 0x28121969;
const int kRebootRestart = 0x01234567;
} // namespace

Reboot::Reboot() : m_targetCode(0), m_bootFlags(), m_targetSet(false), m_coldBoot(false)
{
    m_bootFlags[0] = kBootFlagsParameter;
    m_bootFlags[1] = kValidForNextBootOnly;
}

void Reboot::TargetA()
{
    // Selector 15 (floppy) is all four selector bits, so OR-ing is enough.
    m_targetSet = true;
    m_targetCode = 1;
    m_bootFlags[2] |= kSelectorBits;
}

void Reboot::TargetC()
{
    target(3, 2);
}

void Reboot::TargetCD()
{
    target(2, 5);
}

void Reboot::TargetPXE()
{
    target(64, 1);
}

void Reboot::TargetFSET()
{
    target(48, 6);
}

void Reboot::ColdBoot(const bool& cold)
{
    m_coldBoot = cold;
}

void Reboot::target(unsigned short code, unsigned char selector)
{
    m_targetSet = true;
    m_targetCode = code;
    m_bootFlags[2] = static_cast<unsigned char>((m_bootFlags[2] & ~kSelectorBits) | selector << 2);
}

int Reboot::Perform()
{
    if (m_targetSet)
        recordTarget();
    if (m_coldBoot)
        resetCold();
    return Common::Platform::hardware().reboot(kRebootMagic, kRebootMagic2, kRebootRestart);
}

void Reboot::recordTarget()
{
    // The ROM variable and IPMI paths come with the ROM and IPMI services.
}

void Reboot::resetCold()
{
    if (Common::System::NVRAM::Supported())
        ColdReset::ArmThroughNVRAM();
    Common::Platform::hardware().sleepMicroseconds(kSettleMicroseconds);
}

} // namespace Collection
