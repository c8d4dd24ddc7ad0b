#include "common/OutputStreamToFile.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace Common
{

OutputStreamToFile::OutputStreamToFile(string const& path, bool append)
    : m_fd(::open(path.c_str(),
                  O_WRONLY | O_CREAT | O_CLOEXEC | (append ? O_APPEND : O_TRUNC),
                  0644))
{
}

OutputStreamToFile::~OutputStreamToFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

bool OutputStreamToFile::Accept(char const* bytes, unsigned length)
{
    if (m_fd < 0)
        return false;
    while (length > 0)
    {
        ssize_t written = ::write(m_fd, bytes, length);
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
