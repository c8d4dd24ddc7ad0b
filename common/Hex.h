#pragma once

// Upper-case hexadecimal fields of fixed width (the storage inventory's
// attributes, the names database keys): a byte as "%02X", a word as "%04X",
// a double word as "%08X".

#include "common/String.h"

Common::string IN_HEX_2(unsigned char value);
Common::string IN_HEX_4(unsigned short value);
Common::string IN_HEX_8(unsigned int value);
