#pragma once

// INTERIM: stands in for Common::Filesystem::TemporaryFile (Part 5.3) until
// it lands on main (branch "files"); same behaviour: the name is
// tempnam("/tmp", "file") (plus "." + extension when one is given), no file
// is created, and the destructor removes the file by name when asked to. When
// Part 5.3 lands, use Common::Filesystem::TemporaryFile and delete this file
// and InterimTemporaryFile.cpp.

#include "common/String.h"

namespace Interim
{

class TemporaryFile
{
public:
    TemporaryFile(const Common::string& extension, const bool& removeOnDestroy);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    Common::string& name() { return m_name; }

private:
    Common::string m_name;
    bool m_removeOnDestroy;
};

} // namespace Interim
