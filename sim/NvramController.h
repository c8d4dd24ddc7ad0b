#pragma once

#include "sim/PciFunction.h"
#include "sim/SimClock.h"

#include <limits>

namespace Sim
{

// The management controller's NVRAM function (vendor 0x0E11): a scratch
// byte at 0x80 for the presence probe and the hardware semaphore at 0xE1.
// Reading the semaphore as 0 acquires it; while held it reads 1; writing 0
// releases it. The firmware can hold it until a simulated time.
class NvramController : public PciFunction
{
public:
    static constexpr std::uint64_t kForever = std::numeric_limits<std::uint64_t>::max();

    NvramController(SimClock const& clock, std::uint16_t deviceId);

    // The firmware holds the semaphore until the clock reaches `until`.
    NvramController& holdByFirmware(std::uint64_t until = kForever);
    // The scratch byte ignores writes, so the probe's read-back fails: a
    // function with the right IDs that is not the controller.
    NvramController& ignoreScratchWrites();

    bool semaphoreHeld() const { return m_held; }
    unsigned acquisitions() const { return m_acquisitions; }

    std::uint32_t read(std::uint8_t offset, unsigned width) override;
    void write(std::uint8_t offset, unsigned width, std::uint32_t value) override;

private:
    static constexpr std::uint8_t kSemaphore = 0xE1;
    static constexpr std::uint8_t kScratch = 0x80;

    bool firmwareHolds() const { return m_clock.now() < m_firmwareUntil; }

    SimClock const& m_clock;
    std::uint64_t m_firmwareUntil = 0;
    bool m_held = false;
    unsigned m_acquisitions = 0;
};

} // namespace Sim
