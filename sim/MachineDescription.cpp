#include "sim/MachineDescription.h"

#include "common/XML.h"
#include "sim/Machine.h"
#include "sim/RomServices.h"

#include <array>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>

namespace Sim
{

namespace
{
using Common::XML::Element;
typedef Common::shared_ptr<Element> ElementPtr;

// A description error: what was wrong, and in which element.
struct Malformed : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

std::string text(Common::string const& s)
{
    return std::string(s.c_str(), s.size());
}

std::string attribute(ElementPtr const& element, char const* name)
{
    return text(element->attribute(name));
}

std::uint64_t number(ElementPtr const& element, char const* name, std::uint64_t fallback,
                     std::uint64_t max)
{
    std::string value = attribute(element, name);
    if (value.empty())
        return fallback;
    std::size_t used = 0;
    std::uint64_t parsed = 0;
    try
    {
        parsed = std::stoull(value, &used, 0);
    }
    catch (std::exception const&)
    {
        used = 0;
    }
    if (used != value.size() || parsed > max)
        throw Malformed("<" + text(element->tag()) + "> " + name + "=\"" + value +
                        "\" is not a number up to " + std::to_string(max));
    return parsed;
}

std::uint8_t byte(ElementPtr const& element, char const* name, std::uint8_t fallback = 0)
{
    return static_cast<std::uint8_t>(number(element, name, fallback, 0xFF));
}

std::uint16_t word(ElementPtr const& element, char const* name, std::uint16_t fallback = 0)
{
    return static_cast<std::uint16_t>(number(element, name, fallback, 0xFFFF));
}

std::uint32_t dword(ElementPtr const& element, char const* name, std::uint32_t fallback = 0)
{
    return static_cast<std::uint32_t>(number(element, name, fallback, 0xFFFFFFFFu));
}

// Blank-separated byte numbers, e.g. "0x02 0x00".
std::vector<std::uint8_t> byteList(ElementPtr const& element, char const* name)
{
    std::vector<std::uint8_t> bytes;
    std::istringstream words(attribute(element, name));
    std::string word;
    while (words >> word)
    {
        std::size_t used = 0;
        unsigned long parsed = 0;
        try
        {
            parsed = std::stoul(word, &used, 0);
        }
        catch (std::exception const&)
        {
            used = 0;
        }
        if (used != word.size() || parsed > 0xFF)
            throw Malformed("<" + text(element->tag()) + "> " + name + "=\"" +
                            attribute(element, name) + "\" holds \"" + word + "\", not a byte");
        bytes.push_back(static_cast<std::uint8_t>(parsed));
    }
    return bytes;
}

bool flag(ElementPtr const& element, char const* name)
{
    std::string value = attribute(element, name);
    if (value.empty() || value == "no")
        return false;
    if (value == "yes")
        return true;
    throw Malformed("<" + text(element->tag()) + "> " + name + "=\"" + value +
                    "\" is neither yes nor no");
}

PciLocation location(ElementPtr const& element)
{
    PciLocation at;
    at.bus = byte(element, "bus");
    at.device = static_cast<std::uint8_t>(number(element, "device", 0, 31));
    at.function = static_cast<std::uint8_t>(number(element, "function", 0, 7));
    return at;
}

template <class Visit> void forEachChild(ElementPtr const& parent, Visit visit)
{
    for (auto it = parent->elementBegin(); it != parent->elementEnd(); ++it)
        visit(*it);
}

typedef std::map<std::string, std::function<void(ElementPtr const&)>> Handlers;

// Hands every child of `parent` to the handler named by its tag; an unknown
// tag is an error.
void dispatch(ElementPtr const& parent, Handlers const& handlers, std::string const& kind)
{
    forEachChild(parent,
                 [&](ElementPtr const& child)
                 {
                     auto found = handlers.find(text(child->tag()));
                     if (found == handlers.end())
                         throw Malformed("unknown " + kind + " <" + text(child->tag()) + ">");
                     found->second(child);
                 });
}

void smbios(ElementPtr const& element, Machine& machine)
{
    SmbiosBuilder table;
    Handlers records = {
        {"Bios", [&](ElementPtr const& e)
         { table.bios(attribute(e, "vendor"), attribute(e, "version"), attribute(e, "date")); }},
        {"System",
         [&](ElementPtr const& e) {
             table.system(attribute(e, "manufacturer"), attribute(e, "product"),
                          attribute(e, "serial"));
         }},
        {"Chassis", [&](ElementPtr const& e) { table.chassis(attribute(e, "assetTag")); }},
        {"Processor",
         [&](ElementPtr const& e) {
             table.processor(attribute(e, "manufacturer"), byte(e, "type", 3),
                             byte(e, "status", 0x41));
         }},
        {"MemoryDevice",
         [&](ElementPtr const& e) { table.memoryDevice(word(e, "size"), byte(e, "type", 0x18)); }},
        {"RedundantRom",
         [&](ElementPtr const& e) { table.redundantRomDate(attribute(e, "date")); }},
        {"SystemId", [&](ElementPtr const& e) { table.systemId(attribute(e, "id")); }},
    };
    dispatch(element, records, "SMBIOS record");
    EntryPointPlacement placement;
    placement.anchor = dword(element, "anchor", placement.anchor);
    placement.table = dword(element, "table", placement.table);
    machine.installSmbios(table, placement);
}

void iplTable(ElementPtr const& element, Machine& machine)
{
    std::vector<IplEntry> entries;
    forEachChild(element,
                 [&](ElementPtr const& entry) {
                     entries.push_back(
                         {word(entry, "type"), location(entry), attribute(entry, "description")});
                 });
    machine.installIplTable(entries, dword(element, "address", 0xF4000));
}

void function(ElementPtr const& element, Machine& machine)
{
    PciFunction& added =
        machine.addFunction(location(element), word(element, "vendor"), word(element, "deviceId"),
                            byte(element, "class"), byte(element, "subclass"));
    added.subsystem(word(element, "subsystemVendor"), word(element, "subsystemId"));
    added.procFileSize(static_cast<unsigned>(number(element, "procFileSize", 256, 256)));
}

// A Corvane ROM with its services, environment variables and routing table.
void rom(ElementPtr const& element, Machine& machine)
{
    RomServices::addStandardRom(machine);
    Handlers parts = {
        {"Variable",
         [&](ElementPtr const& e)
         {
             std::string value = attribute(e, "value");
             std::vector<std::uint8_t> content(value.begin(), value.end());
             if (!attribute(e, "bytes").empty())
                 content = byteList(e, "bytes");
             machine.environment().set(attribute(e, "name"), content);
         }},
        {"Route",
         [&](ElementPtr const& e)
         {
             machine.addRomRoute(
                 {location(e), byte(e, "slot"), byte(e, "link", 0x60), word(e, "bitmap", 0xDEB8)});
         }},
    };
    dispatch(element, parts, "ROM part");
}

// Four bytes "a.b.c.d" or six "xx:xx:xx:xx:xx:xx" (hexadecimal).
template <std::size_t N>
std::array<std::uint8_t, N> address(ElementPtr const& element, char const* name,
                                    std::array<std::uint8_t, N> const& fallback)
{
    std::string value = attribute(element, name);
    if (value.empty())
        return fallback;
    std::array<std::uint8_t, N> bytes = {};
    char const separator = N == 4 ? '.' : ':';
    std::istringstream fields(value);
    std::string field;
    std::size_t count = 0;
    while (std::getline(fields, field, separator))
    {
        std::size_t used = 0;
        unsigned long parsed = 0;
        try
        {
            parsed = std::stoul(field, &used, N == 4 ? 10 : 16);
        }
        catch (std::exception const&)
        {
            used = 0;
        }
        if (count == N || used == 0 || used != field.size() || parsed > 0xFF)
            throw Malformed("<" + text(element->tag()) + "> " + name + "=\"" + value +
                            "\" is not an address");
        bytes[count++] = static_cast<std::uint8_t>(parsed);
    }
    if (count != N)
        throw Malformed("<" + text(element->tag()) + "> " + name + "=\"" + value +
                        "\" is not an address");
    return bytes;
}

// "user", "operator", "administrator" or "noaccess" as a privilege level.
std::uint8_t privilege(ElementPtr const& element)
{
    static std::map<std::string, std::uint8_t> const kLevels = {
        {"user", 2}, {"operator", 3}, {"administrator", 4}, {"noaccess", 0x0F}};
    std::string value = attribute(element, "privilege");
    if (value.empty())
        return 0x0F;
    auto found = kLevels.find(value);
    if (found == kLevels.end())
        throw Malformed("<" + text(element->tag()) + "> privilege=\"" + value +
                        "\" is not a privilege");
    return found->second;
}

void controllerParts(ElementPtr const& element, ManagementController& controller)
{
    Handlers parts = {
        {"User",
         [&](ElementPtr const& e)
         {
             ManagementUser& user =
                 controller.users().user(static_cast<unsigned>(number(e, "id", 0, 63)));
             user.name = attribute(e, "name");
             user.password = attribute(e, "password");
             user.enabled = flag(e, "enabled");
             user.privilege = privilege(e);
             user.messaging = user.privilege != 0x0F;
         }},
        {"Lan",
         [&](ElementPtr const& e)
         {
             ManagementLan& lan = controller.lan();
             lan.channel = static_cast<std::uint8_t>(number(e, "channel", lan.channel, 15));
             lan.ipSource = static_cast<std::uint8_t>(number(e, "ipSource", lan.ipSource, 4));
             lan.address = address(e, "address", lan.address);
             lan.mask = address(e, "mask", lan.mask);
             lan.gateway = address(e, "gateway", lan.gateway);
             lan.mac = address(e, "mac", lan.mac);
             lan.vlan = static_cast<std::uint16_t>(number(e, "vlan", 0, 4094));
             lan.nonVolatileAccess = lan.volatileAccess =
                 static_cast<std::uint8_t>(number(e, "access", lan.nonVolatileAccess, 0x3F));
         }},
        {"Sol",
         [&](ElementPtr const& e)
         {
             ManagementSol& sol = controller.sol();
             if (!attribute(e, "enabled").empty())
                 sol.enabled = flag(e, "enabled");
             sol.nonVolatileBitRate = sol.volatileBitRate =
                 static_cast<std::uint8_t>(number(e, "bitRate", sol.nonVolatileBitRate, 10));
         }},
    };
    dispatch(element, parts, "controller part");
}

void managementController(ElementPtr const& element, Machine& machine)
{
    ManagementController& controller = machine.addManagementController();
    controller.users().resize(static_cast<unsigned>(number(element, "users", 10, 63)));
    controller.powerRestorePolicy =
        static_cast<std::uint8_t>(number(element, "powerRestorePolicy", 1, 3));
    controllerParts(element, controller);
    controller.node = attribute(element, "node");
    controller.nodeAfterLoading = flag(element, "nodeAfterLoading");
    if (attribute(element, "major").empty())
        controller.listedMajor.reset();
    else
        controller.listedMajor = static_cast<unsigned>(number(element, "major", 0, 0xFFF));
    controller.replyDelayMicroseconds = number(element, "replyDelay", 0, ~0ull);
    controller.silent = flag(element, "silent");
}

void faults(ElementPtr const& element, Machine& machine)
{
    Faults& faults = machine.faults();
    faults.noPhysicalMemory = flag(element, "noPhysicalMemory");
    faults.noMemoryMapping = flag(element, "noMemoryMapping");
    faults.noIOPrivilege = flag(element, "noIOPrivilege");
    faults.noProcBusPci = flag(element, "noProcBusPci");
}

void describe(ElementPtr const& root, Machine& machine)
{
    if (text(root->tag()) != "Machine")
        throw Malformed("the root element is <" + text(root->tag()) + ">, not <Machine>");
    Handlers parts = {
        {"Smbios", [&](ElementPtr const& e) { smbios(e, machine); }},
        {"Signatures",
         [&](ElementPtr const& e)
         {
             if (flag(e, "velmar"))
                 machine.signVelmar();
             if (flag(e, "nvram"))
                 machine.signNvram();
         }},
        {"IplTable", [&](ElementPtr const& e) { iplTable(e, machine); }},
        {"Function", [&](ElementPtr const& e) { function(e, machine); }},
        {"Bridge",
         [&](ElementPtr const& e) { machine.addBridge(location(e), byte(e, "secondary")); }},
        {"NvramController", [&](ElementPtr const& e)
         { machine.addNvramController(location(e), word(e, "deviceId", 0xA0F0)); }},
        {"EmptyBus", [&](ElementPtr const& e) { machine.addEmptyBusDirectory(byte(e, "bus")); }},
        {"Routing",
         [&](ElementPtr const& e)
         {
             machine.provideVlmpci();
             forEachChild(e,
                          [&](ElementPtr const& line)
                          {
                              machine.addRoutingLine({location(line), byte(line, "slot"),
                                                      byte(line, "link", 0x60),
                                                      word(line, "bitmap", 0xDEB8)});
                          });
         }},
        {"Disk",
         [&](ElementPtr const& e)
         {
             machine.addDisk({location(e), attribute(e, "name"), number(e, "bytes", 0, ~0ull),
                              flag(e, "removable"), flag(e, "inBlockFolder")});
         }},
        {"Rom", [&](ElementPtr const& e) { rom(e, machine); }},
        {"ManagementController", [&](ElementPtr const& e) { managementController(e, machine); }},
        {"Faults", [&](ElementPtr const& e) { faults(e, machine); }},
    };
    dispatch(root, parts, "element");
}
} // namespace

bool MachineDescription::Load(std::string const& path, Machine& machine, std::string& error)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        error = "cannot read " + path;
        return false;
    }
    std::ostringstream content;
    content << file.rdbuf();
    if (Parse(content.str(), machine, error))
        return true;
    error = path + ": " + error;
    return false;
}

bool MachineDescription::Parse(std::string const& description, Machine& machine, std::string& error)
{
    ElementPtr root(new Element(Common::string()));
    Common::XML::Parser().XML(Common::string(description.data(), description.size()), root);
    try
    {
        describe(root, machine);
        return true;
    }
    catch (Malformed const& malformed)
    {
        error = malformed.what();
        return false;
    }
    catch (std::invalid_argument const& refused) // by the machine, e.g. a disk name taken twice
    {
        error = refused.what();
        return false;
    }
}

} // namespace Sim
