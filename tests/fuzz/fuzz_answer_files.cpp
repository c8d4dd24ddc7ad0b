// Both answer-file writers over settings made from the input: known keys
// (and the odd unknown one) with arbitrary values, present or empty.

#include "collection/TextAnswerFile.h"
#include "collection/UnattendSettings.h"
#include "collection/XMLAnswerFile.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <string>

namespace
{
// Every key the writers read.
const char* const kKeys[] = {
    "AdminPassword", "AutoLogonCount", "AutoMode", "AutoUsers", "ComputerName",
    "DomainAdmin", "DomainAdminPassword", "FirstLogonCommand", "FullName", "ImageName",
    "JoinDomain", "JoinWorkgroup", "Keyboard", "Language", "MassStorageDriver",
    "OrganizationName", "ProductID", "R2Run", "Rotate", "SNMPControl",
    "SNMPMonitor", "SNMPTraps", "TimeZone", "WIMVersion", "WMIEnabled"};
const unsigned kKeyCount = sizeof kKeys / sizeof kKeys[0];

Common::istring text(const std::string& bytes)
{
    return Common::istring(bytes.data(), static_cast<unsigned>(bytes.size()));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    Collection::UnattendSettings::Answers answers;
    const bool x64 = input.ConsumeBool();
    while (input.remaining_bytes() > 0)
    {
        // One in 32 keys is made up, the rest name what the writers read.
        const unsigned pick = input.ConsumeIntegralInRange<unsigned>(0, kKeyCount + kKeyCount / 4);
        const Common::istring key = pick < kKeyCount ? Common::istring(kKeys[pick])
                                                     : text(input.ConsumeRandomLengthString(16));
        const Common::istring value = text(input.ConsumeRandomLengthString(256));
        answers.insert(Common::pair<Common::istring, Common::istring>(key, value));
    }
    const Collection::UnattendSettings settings(answers);

    const Common::istring textFile = Collection::renderTextAnswerFile(settings);
    const Common::istring xmlFile = Collection::XMLAnswerFile(settings, x64).render();
    // Every line of the text file ends with CR LF: a value never adds a line
    // break of its own there (the XML file may hold one inside an element).
    for (unsigned i = 0; i < textFile.size(); ++i)
        if (textFile[i] == '\n' && (i == 0 || textFile[i - 1] != '\r'))
            __builtin_trap();
    if (xmlFile.empty())
        __builtin_trap();
    return 0;
}
