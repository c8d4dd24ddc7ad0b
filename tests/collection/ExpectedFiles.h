#pragma once

// Reading of files, and of the expected outputs checked in under expected/.

#include <fstream>
#include <iterator>
#include <string>

inline std::string readFile(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline std::string expected(char const* name)
{
    return readFile(std::string(TIDEWELL_EXPECTED_DIR) + "/" + name);
}
