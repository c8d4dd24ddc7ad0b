#include "common/Sleep.h"

#include <cerrno>
#include <ctime>

namespace Common
{
namespace Synchronization
{

void Sleep(unsigned int ms)
{
    timespec remaining = {static_cast<time_t>(ms / 1000), static_cast<long>(ms % 1000) * 1000000L};
    while (nanosleep(&remaining, &remaining) == -1 && errno == EINTR)
    {
    }
}

} // namespace Synchronization
} // namespace Common
