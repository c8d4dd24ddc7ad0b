#include "common/system/SMBiosEntryPoint.h"

#include <cstring>

namespace Common
{
namespace System
{

namespace
{
const unsigned int kTableLengthAt = 0x16;
const unsigned int kTableAddressAt = 0x18;
const unsigned int kStructureCountAt = 0x1C;
const unsigned int kFieldsEnd = 0x1E;

unsigned int little(unsigned char const* bytes, unsigned int count)
{
    unsigned int value = 0;
    for (unsigned int i = count; i > 0; --i)
        value = value << 8 | bytes[i - 1];
    return value;
}
} // namespace

bool SMBiosEntryPoint::Find(unsigned char const* area, unsigned int length, SMBiosEntryPoint& found)
{
    if (area == nullptr)
        return false;
    for (unsigned int at = 0; at + 4 <= length; ++at)
    {
        if (std::memcmp(area + at, "_SM_", 4) != 0)
            continue;
        if (length - at < kFieldsEnd)
            return false;
        unsigned char const* entry = area + at;
        found.tableLength = static_cast<unsigned short>(little(entry + kTableLengthAt, 2));
        found.tableAddress = little(entry + kTableAddressAt, 4);
        found.structureCount = static_cast<unsigned short>(little(entry + kStructureCountAt, 2));
        return true;
    }
    return false;
}

} // namespace System
} // namespace Common
