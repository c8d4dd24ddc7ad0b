#include "collection/Unattend.h"

#include "collection/TextAnswerFile.h"
#include "collection/UnattendSettings.h"
#include "collection/XMLAnswerFile.h"
#include "common/OutputStreamToFile.h"
#include "common/SharedPtr.h"

#include <cstdio>

namespace Collection
{
namespace
{

// The parameters each family's page copies into the answers, in this order.
char const* const olderFamilyParameters[] = {
    "ComputerName",   "FullName",    "OrganizationName",    "AdminPassword",
    "AutoLogonCount", "TimeZone",    "SkipRegional",        "JoinWorkgroup",
    "JoinDomain",     "DomainAdmin", "DomainAdminPassword", "ProductID",
    "AutoMode",       "AutoUsers",   "MassStorageDriver",   "ExtendOemPartition",
    "FileSystem",     "SNMPMonitor", "SNMPControl",         "SNMPTraps",
    "R2Run",          "Rotate",
};

char const* const newerFamilyParameters[] = {
    "WIMVersion",       "ImageName",     "ComputerName",   "FullName",
    "OrganizationName", "AdminPassword", "AutoLogonCount", "TimeZone",
    "JoinWorkgroup",    "JoinDomain",    "DomainAdmin",    "DomainAdminPassword",
    "ProductID",        "Language",      "Keyboard",       "FirstLogonCommand",
    "SNMPMonitor",      "SNMPControl",   "SNMPTraps",      "WMIEnabled",
    "Rotate",
};

template <unsigned N> constexpr unsigned countOf(char const* const (&)[N])
{
    return N;
}

struct Platform
{
    char const* name;
    Unattend::EnUnattendOS os;
    char const* const* parameters;
    unsigned parameterCount;
};

Platform const platforms[] = {
    {"W2K3", Unattend::W2K3, olderFamilyParameters, countOf(olderFamilyParameters)},
    {"W2K3_X64", Unattend::W2K3_X64, olderFamilyParameters, countOf(olderFamilyParameters)},
    {"W2K8", Unattend::W2K8, newerFamilyParameters, countOf(newerFamilyParameters)},
    {"W2K8_X64", Unattend::W2K8_X64, newerFamilyParameters, countOf(newerFamilyParameters)},
};

// The platform's letter case must match: "w2k8" names no platform.
Platform const* findPlatform(Common::string const& name)
{
    for (Platform const& platform : platforms)
        if (name == platform.name)
            return &platform;
    return nullptr;
}

} // namespace

Unattend::Unattend()
{
    Load(W2K3);
}

Unattend::~Unattend() {}

void Unattend::Load(EnUnattendOS const& target)
{
    os = target;
    content.clear();
    settings.clear();
}

void Unattend::Set(Common::istring const& key, Common::istring const& value)
{
    settings[key] = value;
}

bool Unattend::writeToFile(Common::string const& path)
{
    render();
    Common::shared_ptr<Common::OutputStream> file(new Common::OutputStreamToFile(path, false));
    if (!file->isOpen())
        return false;
    if (file->Accept(content.c_str(), content.size()))
        return true;
    // A disk that filled up: a cut answer file must not be taken for a
    // whole one by the installation that reads it.
    file = Common::shared_ptr<Common::OutputStream>();
    std::remove(path.c_str());
    return false;
}

void Unattend::render()
{
    UnattendSettings answers(settings);
    switch (os)
    {
    case W2K3:
    case W2K3_X64:
        content = renderTextAnswerFile(answers);
        break;
    case W2K8:
    case W2K8_X64:
        content = XMLAnswerFile(answers, os == W2K8_X64).render();
        break;
    }
}

char Unattend::WriteFromRequest(ParameterLookup lookup, void* request)
{
    Unattend unattend;
    if (Platform const* platform = findPlatform(Common::string(lookup(request, "Platform"))))
    {
        unattend.Load(platform->os);
        for (unsigned i = 0; i < platform->parameterCount; ++i)
        {
            // An empty parameter counts as not given, so the writers' defaults apply.
            char const* name = platform->parameters[i];
            Common::istring value = lookup(request, name);
            if (!value.empty())
                unattend.Set(name, value);
        }
    }
    return unattend.writeToFile(Common::string(lookup(request, "Filename"))) ? '0' : '1';
}

} // namespace Collection
