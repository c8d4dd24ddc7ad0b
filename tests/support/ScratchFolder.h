#pragma once

#include "common/List.h"
#include "common/String.h"
#include "tests/support/Files.h"
#include "tests/support/Text.h"

#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>

// A fresh folder below /tmp for one test, removed with all it holds at the end.
class ScratchFolder
{
public:
    ScratchFolder()
    {
        char pattern[] = "/tmp/tidewell-files-XXXXXX";
        if (::mkdtemp(pattern) == nullptr)
            throw std::runtime_error("cannot make a scratch folder in /tmp");
        m_path = pattern;
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    std::string path(std::string const& relative = "") const { return m_path + "/" + relative; }
    Common::string at(std::string const& relative = "") const { return path(relative).c_str(); }
    bool exists(std::string const& relative) const
    {
        std::error_code ignored;
        return std::filesystem::exists(std::filesystem::symlink_status(path(relative), ignored));
    }
    void makeFolder(std::string const& relative) const
    {
        std::filesystem::create_directories(path(relative));
    }
    // Writes a file, creating the folders on its way; false when it fails.
    bool write(std::string const& relative, std::string const& bytes) const
    {
        std::filesystem::create_directories(std::filesystem::path(path(relative)).parent_path());
        return TestSupport::writeFile(path(relative), bytes);
    }
    std::string read(std::string const& relative) const
    {
        return TestSupport::readFile(path(relative));
    }

private:
    std::string m_path;
};

// The texts of a list whose order is the folder's own.
inline std::multiset<std::string> asSet(Common::list<Common::string> const& names)
{
    std::multiset<std::string> set;
    for (Common::list<Common::string>::const_iterator name = names.begin(); name != names.end();
         ++name)
        set.insert(text(*name));
    return set;
}
