#include "collection/Reboot.h"

#include "collection/ChassisCommands.h"
#include "collection/ColdReset.h"
#include "common/system/Clock.h"
#include "common/system/EnvironmentVariable.h"
#include "common/system/NVRAM.h"
#include "common/system/Restart.h"

namespace Collection
{

namespace
{
const unsigned char kValidForNextBootOnly = 0x80;
const unsigned char kHardReset = 0x03;
const unsigned int kSettleMicroseconds = 2000000;
const char kTargetVariable[] = "RXTBT1";

const int kRebootMagic = static_cast<int>(0xFEE1DEAD);
const int kRebootMagic2 = 0x28121969;
const int kRebootRestart = 0x01234567;
} // namespace

Reboot::Reboot() : m_targetCode(0), m_bootFlags(), m_targetSet(false), m_coldBoot(false)
{
    m_bootFlags.parameter = ChassisCommands::kBootFlags;
    m_bootFlags.data[0] = kValidForNextBootOnly;
}

void Reboot::TargetA()
{
    // Selector 15 (floppy) is all four selector bits, so OR-ing is enough.
    m_targetSet = true;
    m_targetCode = 1;
    m_bootFlags.data[1] |= ChassisCommands::kSelectorBits;
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
    m_bootFlags.data[1] = static_cast<unsigned char>(
        (m_bootFlags.data[1] & ~ChassisCommands::kSelectorBits) | selector << 2);
}

int Reboot::Perform()
{
    if (m_targetSet)
        recordTarget();
    if (m_coldBoot)
        resetCold();
    return Common::System::Restart::reboot(kRebootMagic, kRebootMagic2, kRebootRestart);
}

void Reboot::recordTarget()
{
    if (Common::EnvironmentVariable::supported())
    {
        // The code's two bytes in memory order, as the ROM keeps it.
        unsigned char code[2] = {static_cast<unsigned char>(m_targetCode),
                                 static_cast<unsigned char>(m_targetCode >> 8)};
        unsigned int length = sizeof code;
        Common::EnvironmentVariable::write(kTargetVariable, code, length);
        return;
    }
    Common::IPMI::_COMPLETION_CODE_RESPONSE response = {0};
    Common::IPMI().execute(ChassisCommands::kNetFn, ChassisCommands::kSetBootOptions, m_bootFlags,
                           response);
}

void Reboot::resetCold()
{
    if (Common::System::NVRAM::Supported())
        ColdReset::ArmThroughNVRAM();
    else
    {
        Common::IPMI::_SET_CHASSIS_CONTROL request = {kHardReset};
        Common::IPMI::_COMPLETION_CODE_RESPONSE response = {0};
        Common::IPMI().execute(ChassisCommands::kNetFn, ChassisCommands::kChassisControl, request,
                               response);
    }
    Common::System::Clock::sleepMicroseconds(kSettleMicroseconds);
}

} // namespace Collection
