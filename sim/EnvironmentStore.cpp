#include "sim/EnvironmentStore.h"

#include <cstring>

namespace Sim
{

namespace
{
void status(RomCallRegisters& registers, std::uint8_t ah)
{
    registers.eax = (registers.eax & 0xFFFF00FFu) | static_cast<std::uint32_t>(ah) << 8;
    registers.eflags = ah == 0 ? registers.eflags & ~1u : registers.eflags | 1u;
}

void* pointer(std::uint32_t address)
{
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(address));
}

std::string nameAt(std::uint32_t address)
{
    return address == 0 ? std::string() : std::string(static_cast<char const*>(pointer(address)));
}
} // namespace

void EnvironmentStore::set(std::string const& name, std::vector<std::uint8_t> const& value)
{
    for (auto& variable : m_variables)
        if (variable.first == name)
        {
            variable.second = value;
            return;
        }
    m_variables.emplace_back(name, value);
}

std::optional<std::vector<std::uint8_t>> EnvironmentStore::value(std::string const& name) const
{
    for (auto const& variable : m_variables)
        if (variable.first == name)
            return variable.second;
    return std::nullopt;
}

std::vector<std::string> EnvironmentStore::names() const
{
    std::vector<std::string> names;
    for (auto const& variable : m_variables)
        names.push_back(variable.first);
    return names;
}

void EnvironmentStore::answer(RomCallRegisters& registers)
{
    ++m_calls;
    std::uint16_t function = static_cast<std::uint16_t>(registers.eax);
    if (function < 0xD8A4 || function > 0xD8A6)
        return registers.refuse();
    if (m_busyCalls > 0)
    {
        --m_busyCalls;
        return status(registers, kBusy);
    }
    if (function == 0xD8A4)
        read(registers);
    else if (function == 0xD8A5)
        write(registers);
    else
        enumerate(registers);
}

void EnvironmentStore::read(RomCallRegisters& registers)
{
    auto found = value(nameAt(registers.esi));
    if (!found)
        return status(registers, kNotFound);
    std::uint16_t capacity = static_cast<std::uint16_t>(registers.ecx);
    registers.ecx = (registers.ecx & 0xFFFF0000u) | static_cast<std::uint16_t>(found->size());
    if (found->size() > capacity)
        return status(registers, kTooSmall);
    if (!found->empty())
        std::memcpy(pointer(registers.edi), found->data(), found->size());
    status(registers, 0);
}

void EnvironmentStore::write(RomCallRegisters& registers)
{
    std::uint16_t length = static_cast<std::uint16_t>(registers.ecx);
    auto const* data = static_cast<std::uint8_t const*>(pointer(registers.edi));
    set(nameAt(registers.esi), std::vector<std::uint8_t>(data, data + length));
    status(registers, 0);
}

void EnvironmentStore::enumerate(RomCallRegisters& registers)
{
    std::uint16_t index = static_cast<std::uint16_t>(registers.ebx);
    std::uint16_t capacity = static_cast<std::uint16_t>(registers.ecx);
    if (index >= m_variables.size())
        return status(registers, kNotFound);
    std::string const& name = m_variables[index].first;
    if (name.size() + 1 > capacity)
        return status(registers, kTooSmall);
    std::memcpy(pointer(registers.esi), name.c_str(), name.size() + 1);
    status(registers, 0);
}

} // namespace Sim
