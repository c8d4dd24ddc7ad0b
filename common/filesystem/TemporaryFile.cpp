#include "common/filesystem/TemporaryFile.h"

#include <cstdio>
#include <cstdlib>

namespace Common
{
namespace Filesystem
{

TemporaryFile::TemporaryFile(string const& extension, bool const& removeOnDestroy)
    : m_removeOnDestroy(removeOnDestroy)
{
    char* made = ::tempnam("/tmp", "file");
    if (!made)
        return;
    m_name = made;
    std::free(made);
    if (!extension.empty())
        m_name += "." + extension;
}

TemporaryFile::~TemporaryFile()
{
    if (m_removeOnDestroy && !m_name.empty())
        std::remove(m_name.c_str());
}

} // namespace Filesystem
} // namespace Common
