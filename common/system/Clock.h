#pragma once

namespace Common
{
namespace System
{

// The clock of hardware waits: a monotonic count of microseconds and a sleep.
// Both pass the hardware seam, so on the simulated server they read and
// advance its simulated time: measure a hardware wait with these, never with
// the system's own clock.
class Clock
{
public:
    static unsigned long long elapsedMicroseconds();
    static void sleepMicroseconds(unsigned int microseconds);
};

} // namespace System
} // namespace Common
