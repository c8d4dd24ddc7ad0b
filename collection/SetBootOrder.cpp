#include "collection/SetBootOrder.h"

#include "collection/ChassisCommands.h"
#include "common/StaticMutex.h"
#include "common/Map.h"
#include "common/system/EnvironmentVariable.h"
#include "common/system/IPMI.h"

#include <cstring>

namespace Collection
{

namespace
{
const char kOrderVariable[] = "RXHIPL";
const unsigned char kUnused = 0xFF;
const unsigned short kNetwork = 6;
const unsigned short kNetworkAlternative = 128;

struct NameAndType
{
    const char* name;
    unsigned char type;
};

// Device names to IPL types.
const NameAndType kIPLTypes[] = {{"floppy", 1}, {"hd", 2},  {"cdrom", 3},
                                 {"pcmcia", 4}, {"usb", 5}, {"vlmcontroller", 16},
                                 {"pxe", 128}};

// Device names to IPMI boot device selectors, and back. "usb" has no
// selector of its own: it boots as a hard disk, and reads back as "hd".
const NameAndType kSelectors[] = {{"floppy", 15}, {"hd", 2},   {"cdrom", 5},
                                  {"pxe", 1},     {"fset", 6}, {"default", 0}};
const NameAndType kUSBSelector = {"usb", 2};
// Persistent boot flags, valid.
const unsigned char kValidForEveryBoot = 0xC0;

Common::map<Common::istring, unsigned char> s_nameToType;
Common::map<unsigned char, Common::istring> s_typeToName;

// The cached answer of supported(), which may be asked beside the start-up
// job's own probes.
Common::Synchronization::StaticMutex s_supportedCheck;
bool s_supportedKnown = false;
bool s_supported = false;

bool isNetwork(unsigned short type)
{
    return type == kNetwork || type == kNetworkAlternative;
}

bool typeMatches(unsigned short entryType, unsigned short wanted)
{
    return entryType == wanted || (isNetwork(entryType) && isNetwork(wanted));
}

bool asksForDefault(const Common::list<Common::istring>& names)
{
    if (names.empty())
        return true;
    for (Common::list<Common::istring>::const_iterator it = names.begin(); it != names.end(); ++it)
        if (*it == "default")
            return true;
    return false;
}

// 0 for a name the map lacks.
unsigned char typeOf(const Common::istring& name)
{
    Common::map<Common::istring, unsigned char>::const_iterator found = s_nameToType.find(name);
    return found == s_nameToType.end() ? 0 : found->second;
}

void addName(const NameAndType& known)
{
    s_nameToType.insert(Common::pair<Common::istring, unsigned char>(known.name, known.type));
}

void fillROMNames()
{
    for (const NameAndType& known : kIPLTypes)
        addName(known);
}

void fillIPMINames()
{
    for (const NameAndType& known : kSelectors)
    {
        addName(known);
        s_typeToName.insert(Common::pair<unsigned char, Common::istring>(known.type, known.name));
    }
    addName(kUSBSelector);
}

int setIPMIOrder(const Common::list<Common::istring>& names)
{
    if (names.empty())
        return 2;
    Common::map<Common::istring, unsigned char>::const_iterator found =
        s_nameToType.find(*names.begin());
    if (found == s_nameToType.end())
        return 2;
    Common::IPMI::_SET_BOOT_FLAGS request = {
        ChassisCommands::kBootFlags,
        {kValidForEveryBoot, static_cast<unsigned char>(found->second << 2), 0, 0, 0}};
    Common::IPMI::_COMPLETION_CODE_RESPONSE response = {0};
    Common::IPMI().execute(ChassisCommands::kNetFn, ChassisCommands::kSetBootOptions, request,
                           response);
    return 0;
}

void getIPMIOrder(Common::string& order)
{
    order = "default";
    Common::IPMI::_REQUEST_BOOT_FLAGS request = {ChassisCommands::kBootFlags, 0, 0};
    Common::IPMI::_GET_BOOT_FLAGS response = {0, 0, 0, {0, 0, 0, 0}};
    if (!Common::IPMI().execute(ChassisCommands::kNetFn, ChassisCommands::kGetBootOptions, request,
                                response))
        return;
    unsigned char selector = (response.data[1] & ChassisCommands::kSelectorBits) >> 2;
    Common::map<unsigned char, Common::istring>::const_iterator found = s_typeToName.find(selector);
    if (found != s_typeToName.end())
        order = Common::string(found->second);
}
} // namespace

SetBootOrder::SetBootOrder() : m_romPath(Common::EnvironmentVariable::supported() && count() != 0)
{
    if (supported() && s_nameToType.empty())
    {
        if (m_romPath)
            fillROMNames();
        else
            fillIPMINames();
    }
}

bool SetBootOrder::supported() const
{
    return s_supportedCheck.holding(
        [this]
        {
            if (!s_supportedKnown)
            {
                s_supported = m_romPath || Common::IPMI::supported();
                s_supportedKnown = true;
            }
            return s_supported;
        });
}

int SetBootOrder::setOrder(const Common::list<Common::istring>& names)
{
    if (!m_romPath)
        return setIPMIOrder(names);
    if (asksForDefault(names))
    {
        unsigned int none = 0;
        unsigned char nothing[1] = {kUnused};
        Common::EnvironmentVariable::write(kOrderVariable, nothing, none);
        return 0;
    }
    // More indexes than the ROM order holds: the first 16 are kept.
    unsigned char order[kMaximumEntries];
    std::memset(order, kUnused, sizeof order);
    unsigned int length = 0;
    for (Common::list<Common::istring>::const_iterator it = names.begin(); it != names.end(); ++it)
    {
        unsigned char wanted = typeOf(*it);
        if (wanted == 0)
            return 2;
        for (unsigned int index = 0; index < kMaximumEntries && index < count(); ++index)
        {
            unsigned short type = (*this)[index].type;
            if (type != 0 && typeMatches(type, wanted) && length < kMaximumEntries)
                order[length++] = static_cast<unsigned char>(index);
        }
    }
    Common::EnvironmentVariable::write(kOrderVariable, order, length);
    return 0;
}

int SetBootOrder::getOrder(Common::string& order)
{
    if (!m_romPath)
    {
        getIPMIOrder(order);
        return 0;
    }
    order.clear();
    unsigned char indexes[kMaximumEntries];
    std::memset(indexes, kUnused, sizeof indexes);
    unsigned int length = sizeof indexes;
    if (!Common::EnvironmentVariable::read(kOrderVariable, indexes, length))
        return 3;
    bool first = true;
    for (unsigned int i = 0; i < length && i < kMaximumEntries; ++i)
    {
        if (indexes[i] == kUnused)
            continue;
        if (!first)
            order += " ";
        first = false;
        order += Common::string((*this)[indexes[i]].name);
    }
    return 0;
}

} // namespace Collection
