#pragma once

#include "sim/Machine.h"

#include <cstdio>
#include <string>

// The simulated controller's requests from `from` on, blank-separated, as
// "NNCC:data" in hex (net function, command), with three or more printable
// bytes as 'text' and three or more final zeros as "00*N". `only` lists the
// "NNCC" to keep; empty keeps all.
inline std::string ipmiLog(Sim::Machine& machine, std::size_t from = 0,
                           const std::string& only = "")
{
    std::string log;
    const std::vector<Sim::IpmiRequest>& requests = machine.managementController()->requests();
    for (std::size_t i = from; i < requests.size(); ++i)
    {
        char hex[8];
        std::snprintf(hex, sizeof hex, "%02X%02X", requests[i].netfn, requests[i].cmd);
        if (!only.empty() && only.find(hex) == std::string::npos)
            continue;
        log += (log.empty() ? "" : " ") + std::string(hex) + ":";
        const std::vector<std::uint8_t>& data = requests[i].data;
        std::size_t end = data.size();
        while (end > 0 && data[end - 1] == 0)
            --end;
        if (data.size() - end < 3)
            end = data.size();
        for (std::size_t at = 0, run = 0; at<end; at = run> at + 2 ? run : at + 1)
        {
            for (run = at; run < end && data[run] >= 0x20 && data[run] < 0x7F;)
                ++run;
            if (run > at + 2)
                log += "'" + std::string(data.begin() + at, data.begin() + run) + "'";
            else
                log += (std::snprintf(hex, sizeof hex, "%02X", data[at]), hex);
        }
        if (end < data.size())
            log += "00*" + std::to_string(data.size() - end);
    }
    return log;
}
