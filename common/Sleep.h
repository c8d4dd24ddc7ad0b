#pragma once

namespace Common
{
namespace Synchronization
{

// Suspends the calling thread for at least `ms` milliseconds; a signal
// handled meanwhile does not cut the sleep short.
void Sleep(unsigned int ms);

} // namespace Synchronization
} // namespace Common
