#include "common/system/Clock.h"

#include "platform/Hardware.h"

namespace Common
{
namespace System
{

unsigned long long Clock::elapsedMicroseconds()
{
    return Platform::hardware().elapsedMicroseconds();
}

void Clock::sleepMicroseconds(unsigned int microseconds)
{
    Platform::hardware().sleepMicroseconds(microseconds);
}

} // namespace System
} // namespace Common
