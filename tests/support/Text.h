#pragma once

#include "common/String.h"

#include <string>

// The bytes of a Common::string, NULs included.
inline std::string text(Common::string const& s)
{
    return std::string(s.c_str(), s.size());
}
