#pragma once

#include "common/String.h"

namespace Common
{
namespace Filesystem
{

// A fresh file name in "/tmp" ("/tmp/file" followed by random characters, and
// "." + extension when one is given). The constructor creates no file: the
// owner creates it under that name. When `removeOnDestroy` is true the
// destructor removes whatever file then has the name.
//
// The name comes from the C library's tempnam, which prefers the folder named
// by the environment variable TMPDIR when that is set and writable. The name
// is empty if no name could be made.
class TemporaryFile
{
public:
    TemporaryFile(string const& extension, bool const& removeOnDestroy);
    ~TemporaryFile();
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    string& name() { return m_name; }

private:
    string m_name;
    bool m_removeOnDestroy;
};

} // namespace Filesystem
} // namespace Common
