#pragma once

namespace Common
{
namespace System
{

// The fields of the SMBIOS entry point ("_SM_") that locate the structure
// table. Checksums, version and the intermediate anchor are not looked at.
struct SMBiosEntryPoint
{
    unsigned short tableLength;
    unsigned int tableAddress;
    unsigned short structureCount;

    // Scans `area` byte by byte (the anchor need not be 16-byte aligned) for
    // the first "_SM_"; false when there is none or when the entry point's
    // fields would run past the end of `area`.
    static bool Find(unsigned char const* area, unsigned int length, SMBiosEntryPoint& found);
};

} // namespace System
} // namespace Common
