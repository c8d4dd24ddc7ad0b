#pragma once

#include "common/OutputStream.h"

namespace Common
{

// Writes to a file: appended to when `append` is true, else the file is
// replaced (truncated). A new file gets mode 0644, less the umask. Files may
// grow beyond 2 GiB. Only regular files are written: a path naming a FIFO,
// a device or a folder does not open (isOpen is false), see RegularFile.h.
class OutputStreamToFile : public OutputStream
{
public:
    OutputStreamToFile(string const& path, bool append);
    ~OutputStreamToFile() override;
    OutputStreamToFile(OutputStreamToFile const&) = delete;
    OutputStreamToFile& operator=(OutputStreamToFile const&) = delete;

    bool isOpen() const override { return m_fd >= 0; }
    bool Accept(char const* bytes, unsigned length) override;

private:
    int m_fd;
};

} // namespace Common
