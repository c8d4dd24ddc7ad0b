#pragma once

#include "common/String.h"

namespace Common
{
namespace Platform
{

// "/proc/bus/pci", or below it "<bus>" or "<bus>/<device>.<function>" in the
// kernel's lower-case hexadecimal naming, as the process's backend places it.
// Empty when the name does not fit the fixed-size buffer used to build it.
string procBusPci();
string procBusPciBus(int bus);
string procBusPciFunction(int bus, int device, int function);

} // namespace Platform
} // namespace Common
