#pragma once

#include "platform/RomCallRegisters.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Sim
{

// The ROM's named environment variables, in index order, as its INT 15h
// functions serve them (AX 0xD8A4 read, 0xD8A5 write, 0xD8A6 enumerate).
// Names and buffers are process addresses in ESI and EDI, as the module
// passes them.
//
// Answers in AH (carry set on any non-zero status): 0 done, 0x8A busy, 0x88
// no such variable or index, 0x89 buffer too small (CX then holds the size
// needed), 0x86 unknown function.
class EnvironmentStore
{
public:
    static const std::uint8_t kBusy = 0x8A;
    static const std::uint8_t kNotFound = 0x88;
    static const std::uint8_t kTooSmall = 0x89;

    // Replaces the value of `name`, or adds it at the end of the index.
    void set(std::string const& name, std::vector<std::uint8_t> const& value);
    std::optional<std::vector<std::uint8_t>> value(std::string const& name) const;
    std::vector<std::string> names() const;

    // The next `calls` calls answer busy without doing anything.
    void answerBusy(unsigned calls) { m_busyCalls = calls; }
    // Every call, answered or not.
    unsigned calls() const { return m_calls; }

    void answer(RomCallRegisters& registers);

private:
    void read(RomCallRegisters& registers);
    void write(RomCallRegisters& registers);
    void enumerate(RomCallRegisters& registers);

    std::vector<std::pair<std::string, std::vector<std::uint8_t>>> m_variables;
    unsigned m_busyCalls = 0;
    unsigned m_calls = 0;
};

} // namespace Sim
