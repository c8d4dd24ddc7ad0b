#include "common/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Common
{

int openRegularFile(string const& path, int flags, unsigned mode)
{
    // O_NONBLOCK makes opening a FIFO return at once; on a regular file it
    // has no effect on reads or writes, so it can stay set.
    int fd = ::open(path.c_str(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode);
    if (fd < 0)
        return -1;
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode))
    {
        ::close(fd);
        return -1;
    }
    return fd;
}

} // namespace Common
