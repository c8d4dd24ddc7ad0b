#pragma once

#include <cstdint>

namespace Sim
{

// The "set in progress" parameter 0 of a configuration (LAN, serial over
// LAN, boot options), as a standard controller keeps it: set complete (0),
// set in progress (1, refused with 81h while already in progress) and commit
// write (2). The simulated settings take effect at once; commits are counted
// so that tests can see them.
class SetInProgress
{
public:
    // The completion code of a write of `value` to parameter 0.
    std::uint8_t write(std::uint8_t value);
    std::uint8_t value() const { return m_inProgress ? 1 : 0; }
    bool inProgress() const { return m_inProgress; }
    unsigned commits() const { return m_commits; }

private:
    bool m_inProgress = false;
    unsigned m_commits = 0;
};

} // namespace Sim
