#include "sim/NvramController.h"

namespace Sim
{

namespace
{
bool covers(std::uint8_t offset, unsigned width, std::uint8_t reg)
{
    return reg >= offset && reg < offset + width;
}
} // namespace

NvramController::NvramController(SimClock const& clock, std::uint16_t deviceId)
    : PciFunction(0x0E11, deviceId, 0x08, 0x80), m_clock(clock)
{
}

NvramController& NvramController::holdByFirmware(std::uint64_t until)
{
    m_firmwareUntil = until;
    return *this;
}

NvramController& NvramController::ignoreScratchWrites()
{
    writable(kScratch, 0);
    return *this;
}

std::uint32_t NvramController::read(std::uint8_t offset, unsigned width)
{
    if (!covers(offset, width, kSemaphore))
        return PciFunction::read(offset, width);
    std::uint8_t semaphore = 1;
    if (!m_held && !firmwareHolds())
    {
        m_held = true;
        ++m_acquisitions;
        semaphore = 0;
    }
    store(kSemaphore, 1, semaphore);
    return load(offset, width);
}

void NvramController::write(std::uint8_t offset, unsigned width, std::uint32_t value)
{
    PciFunction::write(offset, width, value);
    if (covers(offset, width, kSemaphore) &&
        static_cast<std::uint8_t>(value >> (8 * (kSemaphore - offset))) == 0)
        m_held = false;
}

} // namespace Sim
