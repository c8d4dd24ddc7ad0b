#include "extension/InterimTemporaryFile.h"

#include <cstdio>
#include <cstdlib>

namespace Interim
{

TemporaryFile::TemporaryFile(const Common::string& extension, const bool& removeOnDestroy)
    : m_removeOnDestroy(removeOnDestroy)
{
    char* name = ::tempnam("/tmp", "file");
    if (name)
    {
        try
        {
            m_name = name;
        }
        catch (...)
        {
            std::free(name);
            throw;
        }
        std::free(name);
    }
    if (!extension.empty())
        m_name += "." + extension;
}

TemporaryFile::~TemporaryFile()
{
    if (m_removeOnDestroy && !m_name.empty())
        std::remove(m_name.c_str());
}

} // namespace Interim
