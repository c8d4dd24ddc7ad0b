#include "common/Timer.h"

namespace Common
{
namespace Synchronization
{

double Timer::elapsedSeconds() const
{
    // Unsigned, so that a wrap of the clock value still gives the distance.
    unsigned long ticks =
        static_cast<unsigned long>(std::clock()) - static_cast<unsigned long>(m_start);
    return ticks / 1000000.0;
}

} // namespace Synchronization
} // namespace Common
