#include "common/WriteAll.h"

#include <cerrno>
#include <unistd.h>

namespace Common
{

bool writeAll(int fd, char const* bytes, unsigned length)
{
    while (length > 0)
    {
        ssize_t written = ::write(fd, bytes, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        length -= static_cast<unsigned>(written);
    }
    return true;
}

} // namespace Common
