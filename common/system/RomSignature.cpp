#include "common/system/RomSignature.h"

#include "common/StaticMutex.h"
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

// A signature test, read once; the start-up job and a request may ask at once.
struct CachedSignature
{
    Common::Synchronization::StaticMutex check;
    bool known;
    bool present;

    bool at(unsigned long long address, char const* text, unsigned int length)
    {
        return check.holding(
            [&]
            {
                if (!known)
                {
                    present = signatureAt(address, text, length);
                    known = true;
                }
                return present;
            });
    }
};

CachedSignature s_nvram;
CachedSignature s_velmar;
} // namespace

bool IsNVRAMSupported()
{
    return s_nvram.at(0xFFFD9, "NVRM", 4);
}

bool IsVelmarServer()
{
    return s_velmar.at(0xFFFEA, "VELMAR", 6);
}
