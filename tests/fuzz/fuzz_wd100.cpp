// The management processor page over controller replies from the input: one
// command of "wd100.nsp" with parameters from the input, while the simulated
// controller answers its first requests with the input's replies (and the
// rest as a standard controller does). The answer must stay one JSON object
// of printable ASCII, whatever the controller said.
//
// Input: a command byte, a length byte and that many bytes of parameters
// ("&Name=value..."), then replies, each a length byte and its bytes (the
// completion code first).

#include "tests/fuzz/FuzzServer.h"

#include "common/system/IPMI.h"
#include "tests/support/PageRun.h"

#include <cstdint>
#include <string>
#include <vector>

namespace
{
const char* const kCommands[] = {"Query", "SetNetwork", "SetUser", "SetServices",
                                 "SetPowerPolicy"};

bool isJSONObjectOfPrintableText(const std::string& answer)
{
    if (answer.compare(0, 13, "{\"ErrorCode\":") != 0 || answer.back() != '}')
        return false;
    for (char c : answer)
        if (c < 0x20 || c > 0x7E)
            return false;
    return true;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Sim::ManagementController& controller =
        *Fuzz::server([](Sim::Machine& machine) { machine.addManagementController().users().resize(4); })
             .machine.managementController();
    // Detection answers from the standard controller, once for the process.
    controller.forgetScriptedAnswers();
    Common::IPMI::supported();

    std::size_t at = 0;
    auto next = [&]() -> std::uint8_t { return at < size ? data[at++] : 0; };
    std::string query = std::string("Command=") + kCommands[next() % 5];
    const std::size_t parameters = next();
    for (std::size_t i = 0; i < parameters && at < size; ++i)
        query += static_cast<char>(next());
    while (at < size)
    {
        std::vector<std::uint8_t> reply(next());
        for (std::uint8_t& byte : reply)
            byte = next();
        controller.answerNextWith(reply);
    }

    if (!isJSONObjectOfPrintableText(TestSupport::runPage("wd100.nsp", query)))
        __builtin_trap();
    controller.forgetScriptedAnswers();
    controller.forgetRequests();
    return 0;
}
