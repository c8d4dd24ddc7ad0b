#include "common/Hex.h"

#include "common/Format.h"

Common::string IN_HEX_2(unsigned char value)
{
    return Common::formatShort("%02X", static_cast<unsigned>(value));
}

Common::string IN_HEX_4(unsigned short value)
{
    return Common::formatShort("%04X", static_cast<unsigned>(value));
}

Common::string IN_HEX_8(unsigned int value)
{
    return Common::formatShort("%08X", value);
}
