#pragma once

#include "common/List.h"
#include "common/String.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>

// A fresh folder below /tmp for one test, removed with everything in it when
// the test ends.
class ScratchFolder
{
public:
    ScratchFolder()
    {
        char pattern[] = "/tmp/tidewell-files-XXXXXX";
        m_path = ::mkdtemp(pattern);
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(ScratchFolder const&) = delete;
    ScratchFolder& operator=(ScratchFolder const&) = delete;

    std::string path(std::string const& relative = "") const
    {
        return relative.empty() ? m_path : m_path + "/" + relative;
    }
    Common::string at(std::string const& relative = "") const
    {
        return Common::string(path(relative).c_str());
    }

    void write(std::string const& relative, std::string const& bytes) const
    {
        std::filesystem::create_directories(std::filesystem::path(path(relative)).parent_path());
        std::ofstream(path(relative), std::ios::binary) << bytes;
    }
    std::string read(std::string const& relative) const
    {
        std::ifstream in(path(relative), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    void makeFolder(std::string const& relative) const
    {
        std::filesystem::create_directories(path(relative));
    }
    bool exists(std::string const& relative) const
    {
        std::error_code ignored;
        return std::filesystem::exists(std::filesystem::symlink_status(path(relative), ignored));
    }

private:
    std::string m_path;
};

// The texts of a Common::list, for comparing listings whose order is the
// folder's own.
inline std::multiset<std::string> asSet(Common::list<Common::string> const& names)
{
    std::multiset<std::string> set;
    for (Common::list<Common::string>::const_iterator name = names.begin(); name != names.end();
         ++name)
        set.insert(std::string(name->c_str(), name->size()));
    return set;
}
