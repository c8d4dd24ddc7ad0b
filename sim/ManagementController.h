#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Sim
{

// One request as it reached the controller through the IPMI driver.
struct IpmiRequest
{
    int addressType = 0;
    int channel = 0;
    int lun = 0;
    std::uint8_t netfn = 0;
    std::uint8_t cmd = 0;
    std::vector<std::uint8_t> data;
};

// The server's management controller behind the kernel's IPMI driver. It
// answers Get Device ID, Set and Get System Boot Options and Chassis Control
// (completion code 0xC1 for any other command), records every request, and
// can be slow or silent.
//
// Its device node: `node` opens from the start (empty: none does); with
// `nodeAfterLoading`, "/dev/ipmi0" opens once the module has run the mknod
// command with the major that "/proc/devices" lists for "ipmidev".
class ManagementController
{
public:
    std::string node = "/dev/ipmi0";
    bool nodeAfterLoading = false;
    std::optional<unsigned> listedMajor = 239;
    std::uint64_t replyDelayMicroseconds = 0;
    bool silent = false;

    // Answers the request (completion code first), or nothing when silent.
    std::optional<std::vector<std::uint8_t>> answer(IpmiRequest const& request);
    // The next request is answered with exactly these bytes.
    void answerNextWith(std::vector<std::uint8_t> const& reply) { m_scripted.push_back(reply); }

    std::vector<IpmiRequest> const& requests() const { return m_requests; }
    // Boot option parameter -> its data bytes, as last set.
    std::map<std::uint8_t, std::vector<std::uint8_t>>& bootOptions() { return m_bootOptions; }
    std::vector<std::uint8_t> const& chassisControls() const { return m_chassisControls; }

private:
    std::vector<std::uint8_t> respond(IpmiRequest const& request);

    std::vector<IpmiRequest> m_requests;
    std::deque<std::vector<std::uint8_t>> m_scripted;
    std::map<std::uint8_t, std::vector<std::uint8_t>> m_bootOptions;
    std::vector<std::uint8_t> m_chassisControls;
};

} // namespace Sim
