#include "collection/Warden100.h"

#include "common/system/IPMI.h"

namespace Collection
{

bool Warden100::isSupported() const
{
    return Common::IPMI::supported();
}

} // namespace Collection
