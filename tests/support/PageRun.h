#pragma once

#include "extension/NSP.h"

#include <string>

namespace TestSupport
{

// One command page run through a page processor of its own, as the entry
// point runs "zrmedia://Tidewell/<page>?<query>", but without starting the
// library (so no start-up job runs beside it): the text the page flushed.
// Pages that act on hardware must run on a simulated server
// (tests/support/SimulatedServer.h), never on this machine.
inline std::string runPage(const char* page, const std::string& query)
{
    Common::string buffer;
    NSP processor(&buffer);
    processor.Execute(Common::istring("GET"), Common::istring(page),
                      Common::istring(query.c_str()));
    return std::string(buffer.c_str(), buffer.size());
}

} // namespace TestSupport
