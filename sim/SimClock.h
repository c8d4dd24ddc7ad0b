#pragma once

#include <cstdint>

namespace Sim
{

// Simulated time in microseconds. It moves only when the code under test
// sleeps, so a wait of seconds costs a test nothing.
class SimClock
{
public:
    std::uint64_t now() const { return m_now; }
    void advance(std::uint64_t microseconds) { m_now += microseconds; }

private:
    std::uint64_t m_now = 0;
};

} // namespace Sim
