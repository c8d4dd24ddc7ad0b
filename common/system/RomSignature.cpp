#include "common/system/RomSignature.h"

#include "common/system/Memory.h"

#include <cstring>

namespace
{
bool signatureAt(unsigned long long address, char const* text, unsigned int length)
{
    unsigned char found[8];
    return length <= sizeof found && Common::System::Memory::Read(address, found, length) &&
           std::memcmp(found, text, length) == 0;
}
} // namespace

bool IsNVRAMSupported()
{
    static bool s_initialised = false;
    static bool s_result = false;
    if (!s_initialised)
    {
        s_result = signatureAt(0xFFFD9, "NVRM", 4);
        s_initialised = true;
    }
    return s_result;
}

bool IsVelmarServer()
{
    static bool s_initialised = false;
    static bool s_result = false;
    if (!s_initialised)
    {
        s_result = signatureAt(0xFFFEA, "VELMAR", 6);
        s_initialised = true;
    }
    return s_result;
}
