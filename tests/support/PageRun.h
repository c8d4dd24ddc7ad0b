#pragma once

#include "extension/NSP.h"
#include "tests/support/Text.h"

#include <string>

namespace TestSupport
{

// The text of "<page>?<query>" run as the entry point runs it, without
// starting the library (no start-up job). Pages that act on hardware run on
// a simulated server (tests/support/SimulatedServer.h) only.
inline std::string runPage(const char* page, const std::string& query)
{
    Common::string buffer;
    NSP processor(&buffer);
    processor.Execute(Common::istring("GET"), Common::istring(page),
                      Common::istring(query.c_str()));
    return text(buffer);
}

} // namespace TestSupport
