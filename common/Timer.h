#pragma once

#include <ctime>

namespace Common
{
namespace Synchronization
{

// Measures processor time used by the whole process (all its threads) since
// construction or Reset, through clock(); time spent sleeping or blocked
// does not count. The 32-bit clock value wraps after about 71 minutes of
// processor time; one wrap between start and reading is accounted for.
class Timer
{
public:
    Timer() : m_start(std::clock()) {}

    void Reset() { m_start = std::clock(); }

    // Processor seconds: clock ticks (microseconds) divided by 1,000,000.
    double elapsedSeconds() const;

private:
    std::clock_t m_start;
};

} // namespace Synchronization
} // namespace Common
