#include "common/system/IO.h"

#include "platform/Hardware.h"

namespace Common
{
namespace System
{

namespace
{
// Raises the I/O privilege before every access, as a thread of a process
// that dropped it would otherwise fault; the backend refuses port access
// while the privilege is missing.
Platform::Hardware& setupIO()
{
    Platform::Hardware& hardware = Platform::hardware();
    hardware.raiseIOPrivilege();
    return hardware;
}

unsigned short low16(unsigned int port)
{
    return static_cast<unsigned short>(port & 0xFFFF);
}
} // namespace

bool IO::Read(const unsigned int& port, unsigned char& value)
{
    value = setupIO().readPort8(low16(port));
    return true;
}

bool IO::Read(const unsigned int& port, unsigned short& value)
{
    value = setupIO().readPort16(low16(port));
    return true;
}

bool IO::Read(const unsigned int& port, unsigned int& value)
{
    value = setupIO().readPort32(low16(port));
    return true;
}

bool IO::Write(const unsigned int& port, const unsigned char& value)
{
    setupIO().writePort8(low16(port), value);
    return true;
}

bool IO::Write(const unsigned int& port, const unsigned short& value)
{
    setupIO().writePort16(low16(port), value);
    return true;
}

bool IO::Write(const unsigned int& port, const unsigned int& value)
{
    setupIO().writePort32(low16(port), value);
    return true;
}

} // namespace System
} // namespace Common
