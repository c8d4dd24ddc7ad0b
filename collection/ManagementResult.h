#pragma once

#include "collection/ManagementExchange.h"

namespace Collection
{

// How the management controller took a change: done, or the first request
// it refused (with its completion code) or left unanswered.
struct ManagementResult
{
    bool done;
    // What was being set when it failed: a parameter name of the page
    // ("IPAddress", "Password", ...) or a step ("SetInProgress", "Commit",
    // "SetComplete"). A literal: never freed.
    const char* request;
    // False: no reply came within the time limit.
    bool answered;
    unsigned char completionCode;

    static ManagementResult success() { return ManagementResult{true, "", true, 0}; }
    static ManagementResult refused(const char* request, const ManagementExchange& exchange)
    {
        return ManagementResult{false, request, exchange.answered(), exchange.completionCode()};
    }
};

} // namespace Collection
