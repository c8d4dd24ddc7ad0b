#include "sim/SetInProgress.h"

#include "sim/IpmiCodes.h"

namespace Sim
{

std::uint8_t SetInProgress::write(std::uint8_t value)
{
    switch (value & 0x03)
    {
    case 0:
        m_inProgress = false;
        return IpmiCodes::kDone;
    case 1:
        if (m_inProgress)
            return IpmiCodes::kSetAlreadyInProgress;
        m_inProgress = true;
        return IpmiCodes::kDone;
    case 2:
        ++m_commits;
        return IpmiCodes::kDone;
    default:
        return IpmiCodes::kInvalidData;
    }
}

} // namespace Sim
