#include "collection/FSETReset.h"

#include "collection/ColdReset.h"
#include "common/system/NVRAM.h"

namespace Collection
{

int FSETReset::perform()
{
    if (!Common::System::NVRAM::Supported())
        return 2;
    ColdReset::RequestSetupResetThroughNVRAM();
    return 0;
}

} // namespace Collection
