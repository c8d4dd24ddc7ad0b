#include "common/OutputStreamToFile.h"

#include "common/WriteAll.h"

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
    return m_fd >= 0 && writeAll(m_fd, bytes, length);
}

} // namespace Common
