#pragma once

namespace Common
{
namespace System
{

// 8-, 16- and 32-bit access to x86 I/O ports (the low 16 bits of `port`).
// Each access first asks for I/O privilege level 3; without it no port is
// touched, reads give all ones and writes are dropped, and the result is true
// all the same: callers cannot tell, so a missing privilege looks like an
// empty bus.
class IO
{
public:
    static bool Read(const unsigned int& port, unsigned char& value);
    static bool Read(const unsigned int& port, unsigned short& value);
    static bool Read(const unsigned int& port, unsigned int& value);
    static bool Write(const unsigned int& port, const unsigned char& value);
    static bool Write(const unsigned int& port, const unsigned short& value);
    static bool Write(const unsigned int& port, const unsigned int& value);
};

} // namespace System
} // namespace Common
