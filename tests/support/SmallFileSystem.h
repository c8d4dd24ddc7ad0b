#pragma once

#include "tests/support/ScratchFolder.h"

#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>

namespace TestSupport
{

// A small tmpfs, mounted for the object's life (root only: skip the test
// when refusal() is not empty).
class SmallFileSystem
{
public:
    explicit SmallFileSystem(const char* size)
    {
        if (::geteuid() != 0)
            m_refusal = "not root: no file system of its own can be mounted";
        else if (::mount("tidewell-full", m_dir.path().c_str(), "tmpfs", MS_NOSUID | MS_NODEV,
                         (std::string("size=") + size).c_str()) != 0)
            m_refusal = std::string("mount refused: ") + std::strerror(errno);
    }
    ~SmallFileSystem()
    {
        if (m_refusal.empty())
            ::umount2(m_dir.path().c_str(), MNT_DETACH);
    }
    SmallFileSystem(const SmallFileSystem&) = delete;
    SmallFileSystem& operator=(const SmallFileSystem&) = delete;

    const std::string& refusal() const { return m_refusal; }
    std::string file(const std::string& name) const { return m_dir.path(name); }

    // Fills all but about `spare` bytes with the file "filler".
    void fill(std::size_t spare)
    {
        std::FILE* filler = std::fopen(file("filler").c_str(), "wb");
        std::string block(1024, 'f');
        while (std::fwrite(block.data(), 1, block.size(), filler) == block.size() &&
               std::fflush(filler) == 0)
        {
        }
        std::fclose(filler);
        std::filesystem::resize_file(file("filler"),
                                     std::filesystem::file_size(file("filler")) - spare);
    }

private:
    ScratchFolder m_dir;
    std::string m_refusal;
};

} // namespace TestSupport
