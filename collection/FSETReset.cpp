#include "collection/FSETReset.h"

#include "collection/ChassisCommands.h"
#include "collection/ColdReset.h"
#include "common/system/EnvironmentVariable.h"
#include "common/system/IPMI.h"
#include "common/system/NVRAM.h"

namespace Collection
{

namespace
{
// Boot flags valid for the next boot only, with nothing but the clear-CMOS
// flag (bit 7 of boot-flag data byte 2) set: the firmware resets its setup
// settings at that start.
const unsigned char kValidForNextBootOnly = 0x80;
const unsigned char kClearCMOS = 0x80;
} // namespace

int FSETReset::perform()
{
    if (!Common::EnvironmentVariable::supported())
    {
        Common::IPMI::_SET_BOOT_FLAGS request = {ChassisCommands::kBootFlags,
                                                 {kValidForNextBootOnly, kClearCMOS, 0, 0, 0}};
        Common::IPMI::_COMPLETION_CODE_RESPONSE response = {0};
        Common::IPMI().execute(ChassisCommands::kNetFn, ChassisCommands::kSetBootOptions, request,
                               response);
        return 0;
    }
    if (!Common::System::NVRAM::Supported())
        return 2;
    ColdReset::RequestSetupResetThroughNVRAM();
    return 0;
}

} // namespace Collection
