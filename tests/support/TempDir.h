#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace TestSupport
{

// A fresh folder under $TMPDIR (or /tmp), removed with everything in it at
// the end of its life. A folder that cannot be made ends the test program:
// no test can run without it.
class TempDir
{
public:
    explicit TempDir(const char* tag = "tidewell-test")
    {
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/" + tag + "-XXXXXX";
        if (::mkdtemp(&pattern[0]) == nullptr)
            std::abort();
        m_path = pattern;
    }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

// Writes `bytes` to `path`, replacing it; the folders must exist.
inline bool writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    return static_cast<bool>(out);
}

// The whole file; empty if it cannot be read.
inline std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

} // namespace TestSupport
