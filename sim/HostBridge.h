#pragma once

#include "sim/PciFunction.h"
#include "sim/PciLocation.h"

#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

namespace Sim
{

// The host bridge: answers configuration mechanism #1 (a 32-bit address at
// port 0xCF8, data at 0xCFC..0xCFF) with the configuration spaces of the
// machine's functions. Absent functions read all ones and ignore writes.
// Every port access it answers is counted.
class HostBridge
{
public:
    static bool answers(std::uint16_t port) { return port >= 0xCF8 && port <= 0xCFF; }
    // What a read of `width` bytes gives where nothing answers.
    static std::uint32_t allOnes(unsigned width)
    {
        return width >= 4 ? 0xFFFFFFFFu : (1u << (8 * width)) - 1;
    }

    std::uint32_t readPort(std::uint16_t port, unsigned width);
    void writePort(std::uint16_t port, unsigned width, std::uint32_t value);

    // Throws std::invalid_argument for a device above 31 or a function above
    // 7: the configuration address has no room for them, so such a function
    // would never answer. A server of many functions spreads them over buses.
    template <class Function> Function& add(PciLocation at, std::unique_ptr<Function> function)
    {
        if (at.device > 31 || at.function > 7)
            throw std::invalid_argument("no PCI function " + std::to_string(at.device) + "." +
                                        std::to_string(at.function) + " on a bus");
        Function& added = *function;
        m_functions[at] = std::move(function);
        return added;
    }
    PciFunction* find(PciLocation at) const;
    // Removes every function: a fuzzing run starts from an empty bus.
    void clear() { m_functions.clear(); }
    std::map<PciLocation, std::unique_ptr<PciFunction>> const& functions() const
    {
        return m_functions;
    }

    unsigned long accesses() const { return m_accesses; }

private:
    // The function and register the address latch selects for data port
    // byte `lane`, or null when configuration access is not enabled.
    PciFunction* selected(unsigned lane, std::uint8_t& offset) const;

    std::map<PciLocation, std::unique_ptr<PciFunction>> m_functions;
    std::uint32_t m_address = 0;
    unsigned long m_accesses = 0;
};

} // namespace Sim
