#include "common/OutputStreamToFile.h"

#include "common/RegularFile.h"
#include "common/WriteAll.h"

#include <fcntl.h>
#include <unistd.h>

namespace Common
{

OutputStreamToFile::OutputStreamToFile(string const& path, bool append)
    : m_fd(openRegularFile(path, O_WRONLY | O_CREAT | (append ? O_APPEND : O_TRUNC)))
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
