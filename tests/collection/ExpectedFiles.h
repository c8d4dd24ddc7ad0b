#pragma once

// The expected outputs checked in under expected/.

#include "tests/support/Files.h"
#include "tests/support/ScratchFolder.h"

#include <string>

using TestSupport::readFile;

inline std::string expected(char const* name)
{
    return readFile(std::string(TIDEWELL_EXPECTED_DIR) + "/" + name);
}
