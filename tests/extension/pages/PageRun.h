#pragma once

#include "extension/NSP.h"

#include <string>

// Runs one command page through the page processor, as the entry point does
// for "zrmedia://Tidewell/<page>?<query>", and gives the page text. Pages
// that act on hardware must run on a simulated server (onSimulatedServer).
inline std::string runPage(const char* page, const std::string& query)
{
    Common::string buffer;
    NSP nsp(&buffer);
    nsp.Execute("GET", page, query.c_str());
    return std::string(buffer.c_str(), buffer.size());
}
