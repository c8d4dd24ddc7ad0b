#pragma once

#include <cstdlib>
#include <string>
#include <unistd.h>

namespace TestSupport
{

// A fresh folder under /tmp, removed with everything in it at the end of its
// life. Empty path() when it could not be made.
class TempDir
{
public:
    TempDir()
    {
        char pattern[] = "/tmp/tidewell-test-XXXXXX";
        if (::mkdtemp(pattern) != nullptr)
            m_path = pattern;
    }
    ~TempDir()
    {
        if (!m_path.empty())
            std::system(("rm -rf '" + m_path + "'").c_str());
    }
    TempDir(TempDir const&) = delete;
    TempDir& operator=(TempDir const&) = delete;
    std::string const& path() const { return m_path; }
    std::string file(std::string const& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

} // namespace TestSupport
