#pragma once

// Placeholder for per-user state: no fields, no behaviour.
class NSPSession
{
public:
    NSPSession() {}
    ~NSPSession() {}
};
