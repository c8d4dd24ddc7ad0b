#pragma once

// Placeholder for per-user state (Part 1.2): no fields, no behaviour.
class NSPSession
{
public:
    NSPSession() {}
    ~NSPSession() {}
};
