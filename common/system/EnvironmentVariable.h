#pragma once

#include "common/List.h"
#include "common/String.h"

namespace Common
{

// The system ROM's named, persistent environment variables, through its
// INT 15h functions. Every operation maps the ROM area afresh and releases
// it before returning; none throws.
//
// A busy ROM (AH 0x8A) is asked again a second later, up to 30 times, so one
// operation can take 30 seconds. read and write count a ROM that stays busy
// to the end as success: check the value read back where that matters.
class EnvironmentVariable
{
public:
    // A "VELMAR" ROM with a PCI BIOS that answers the enumeration of index 0.
    // Worked out on the first call and kept for the process, also when false.
    static bool supported();

    // `size`: the buffer's capacity on entry (only its low 16 bits reach the
    // ROM), the number of bytes the ROM returned on success.
    static bool read(const char* name, unsigned char* buffer, unsigned int& size);
    // Stores the first `size` bytes of `data` (low 16 bits of `size`).
    static bool write(const char* name, unsigned char* data, unsigned int& size);
    // The names of all variables, in the ROM's index order; empty when not
    // supported.
    static list<string> names();
};

} // namespace Common
