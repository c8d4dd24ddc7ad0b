#pragma once

#include <fstream>
#include <iterator>
#include <string>

namespace TestSupport
{

// Writes `bytes` to `path`, replacing it; the folders must exist. False when
// any of it, the final flush included, could not be written.
inline bool writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    out.close();
    return !out.fail();
}

// The whole file; empty if it cannot be read.
inline std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

} // namespace TestSupport
