#include "platform/ProcPCIPath.h"

#include "platform/Hardware.h"

#include <cstdio>

namespace Common
{
namespace Platform
{

namespace
{
string formatted(int written, char const* text, unsigned size)
{
    if (written < 0 || static_cast<unsigned>(written) >= size)
        return string();
    return string(text);
}
} // namespace

string procBusPci()
{
    return hardware().path("/proc/bus/pci");
}

string procBusPciBus(int bus)
{
    char name[512];
    int written = std::snprintf(name, sizeof name, "%s/%2.2x", procBusPci().c_str(), bus);
    return formatted(written, name, sizeof name);
}

string procBusPciFunction(int bus, int device, int function)
{
    char name[512];
    int written = std::snprintf(name, sizeof name, "%s/%2.2x/%2.2x.%1.1x", procBusPci().c_str(),
                                bus, device, function);
    return formatted(written, name, sizeof name);
}

} // namespace Platform
} // namespace Common
