#pragma once

#include "sim/ManagementLan.h"
#include "sim/ManagementSol.h"
#include "sim/ManagementUsers.h"
#include "sim/SetInProgress.h"

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

// The server's management controller behind the kernel's IPMI driver, a
// standard controller: Get Device ID, Get Channel Info (channel 1 is its
// 802.3 LAN channel, 0Fh its system interface), the user table
// (ManagementUsers), the LAN channel (ManagementLan), serial over LAN
// (ManagementSol), Get Chassis Status, Set Power Restore Policy, Chassis
// Control and Set/Get System Boot Options. It checks request lengths as a
// standard controller does (C7h), answers C1h for any other command, CCh for
// invalid data, 80h for an unsupported parameter and 81h for a second set in
// progress. It records every request, and can be slow or silent, or refuse
// chosen requests.
//
// Its device node: `node` opens from the start (empty: none does); with
// `nodeAfterLoading`, "/dev/ipmi0" opens once the module has run the mknod
// command with the major that "/proc/devices" lists for "ipmidev".
class ManagementController
{
public:
    ManagementController();

    std::string node = "/dev/ipmi0";
    bool nodeAfterLoading = false;
    std::optional<unsigned> listedMajor = 239;
    std::uint64_t replyDelayMicroseconds = 0;
    bool silent = false;
    // Get Device ID's reply after the completion code.
    std::vector<std::uint8_t> deviceId = {0x20, 0x01, 0x02, 0x16, 0x02, 0xBF, 0xEF, 0xBE,
                                          0x00, 0x00, 0x10, 0x00, 0x00, 0x00, 0x00};
    // Bits 6..5 of Get Chassis Status' power state: 0 always off, 1 previous,
    // 2 always on, 3 unknown.
    std::uint8_t powerRestorePolicy = 1;

    // Answers the request (completion code first), or nothing when silent.
    std::optional<std::vector<std::uint8_t>> answer(IpmiRequest const& request);
    // The next request is answered with exactly these bytes.
    void answerNextWith(std::vector<std::uint8_t> const& reply) { m_scripted.push_back(reply); }
    // Drops the scripted answers not yet given.
    void forgetScriptedAnswers() { m_scripted.clear(); }
    // Every later request of `netfn`/`cmd` whose data begin with `dataPrefix`
    // is answered with `completionCode` alone and changes nothing.
    void refuse(std::uint8_t netfn, std::uint8_t cmd, std::vector<std::uint8_t> const& dataPrefix,
                std::uint8_t completionCode);

    std::vector<IpmiRequest> const& requests() const { return m_requests; }
    // Empties requests(), as for a long run that does not look at them.
    void forgetRequests() { m_requests.clear(); }
    // Boot option parameter -> its data bytes, as last set.
    std::map<std::uint8_t, std::vector<std::uint8_t>>& bootOptions() { return m_bootOptions; }
    std::vector<std::uint8_t> const& chassisControls() const { return m_chassisControls; }
    ManagementUsers& users() { return m_users; }
    ManagementLan& lan() { return m_lan; }
    ManagementSol& sol() { return m_sol; }

private:
    struct Refusal
    {
        std::uint8_t netfn;
        std::uint8_t cmd;
        std::vector<std::uint8_t> dataPrefix;
        std::uint8_t completionCode;
    };

    std::vector<std::uint8_t> respond(IpmiRequest const& request);
    std::vector<std::uint8_t> application(IpmiRequest const& request);
    std::vector<std::uint8_t> chassis(IpmiRequest const& request);
    std::vector<std::uint8_t> channelInfo(std::vector<std::uint8_t> const& data) const;
    std::vector<std::uint8_t> setBootOption(std::vector<std::uint8_t> const& data);
    std::vector<std::uint8_t> getBootOption(std::vector<std::uint8_t> const& data) const;

    std::vector<IpmiRequest> m_requests;
    std::deque<std::vector<std::uint8_t>> m_scripted;
    std::vector<Refusal> m_refusals;
    std::map<std::uint8_t, std::vector<std::uint8_t>> m_bootOptions;
    SetInProgress m_bootOptionsInProgress;
    std::vector<std::uint8_t> m_chassisControls;
    ManagementUsers m_users;
    ManagementLan m_lan;
    ManagementSol m_sol;
};

} // namespace Sim
