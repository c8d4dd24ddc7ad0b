#pragma once

// Helpers of the Conversion tests: Common::string <-> std::string, so that
// GoogleTest prints mismatches readably (embedded NULs and high bytes
// included).

#include "common/String.h"

#include <string>

namespace conversion_test
{

inline std::string bytes(Common::string const& s)
{
    return std::string(s.c_str(), s.size());
}

inline Common::string make(std::string const& s)
{
    return Common::string(s.data(), static_cast<unsigned>(s.size()));
}

} // namespace conversion_test
