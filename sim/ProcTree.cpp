#include "sim/ProcTree.h"

#include "sim/Machine.h"

#include <cstdio>
#include <map>

namespace Sim
{

namespace
{
struct Node
{
    enum class Kind
    {
        Folder,
        File,
        Link
    };
    Kind kind = Kind::Folder;
    std::string contents; // a file's bytes, a link's target
};

// The part of the tree that one path can reach, by absolute path.
using Tree = std::map<std::string, Node>;

std::string hex(unsigned value, int digits)
{
    char text[16];
    std::snprintf(text, sizeof text, "%0*x", digits, value);
    return text;
}

void addFolder(Tree& tree, std::string const& path)
{
    for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1))
        tree.emplace(path.substr(0, slash), Node{});
    tree.emplace(path, Node{});
}

void add(Tree& tree, std::string const& path, Node::Kind kind, std::string const& contents)
{
    addFolder(tree, path.substr(0, path.rfind('/')));
    tree[path] = Node{kind, contents};
}

// A two-digit bus folder name, or -1.
int busNamed(std::string const& name)
{
    unsigned bus = 0;
    char end = 0;
    return name.size() == 2 && std::sscanf(name.c_str(), "%2x%c", &bus, &end) == 1
               ? static_cast<int>(bus)
               : -1;
}

// "/proc/bus/pci": the bus folders, the "devices" file (its text only when
// `withDevices`) and the function files of bus `only` (none: -1).
void addProcBusPci(Machine const& machine, int only, bool withDevices, Tree& tree)
{
    std::string const base = "/proc/bus/pci";
    addFolder(tree, base);
    std::string devices;
    for (auto const& [at, function] : machine.bridge().functions())
    {
        auto const& config = function->config();
        addFolder(tree, base + "/" + hex(at.bus, 2));
        if (only == at.bus)
        {
            std::size_t size = std::min<std::size_t>(function->procFileSize(), config.size());
            add(tree, base + "/" + hex(at.bus, 2) + "/" + hex(at.device, 2) + "." + hex(at.function, 1),
                Node::Kind::File, std::string(config.begin(), config.begin() + size));
        }
        if (!withDevices)
            continue;
        unsigned vendor = config[0] | config[1] << 8;
        unsigned device = config[2] | config[3] << 8;
        devices += hex(at.bus, 2) + hex(at.device << 3 | at.function, 2) + "\t" + hex(vendor, 4) +
                   hex(device, 4) + "\n";
    }
    for (std::uint8_t bus : machine.emptyBusDirectories())
        addFolder(tree, base + "/" + hex(bus, 2));
    add(tree, base + "/devices", Node::Kind::File, devices);
}

std::string vlmpci(Machine const& machine)
{
    std::string text = "Velmar PCI IRQ routing table (version 1.0)\n"
                       "bus dev fn link map  slot\n";
    for (RoutingLine const& line : machine.routingLines())
    {
        char entry[64];
        std::snprintf(entry, sizeof entry, "%02x %02x %02x %02x %04x %2d\n", line.at.bus,
                      line.at.device, line.at.function, line.link, line.bitmap, line.slot);
        text += entry;
    }
    return text + ")\n";
}

// The kernel's device majors; "ipmidev" only where the controller's driver
// lists it.
std::string devices(Machine const& machine)
{
    std::string text = "Character devices:\n  1 mem\n  4 /dev/vc/0\n  5 /dev/tty\n";
    ManagementController const* controller = machine.managementController();
    if (controller != nullptr && controller->listedMajor)
        text += std::to_string(*controller->listedMajor) + " ipmidev\n";
    return text + "\nBlock devices:\n  8 sd\n 11 sr\n254 mdp\n";
}

std::string sysfsName(PciLocation at)
{
    return "0000:" + hex(at.bus, 2) + ":" + hex(at.device, 2) + "." + std::to_string(at.function);
}

std::string scsiFolder(Disk const& disk)
{
    return "/sys/bus/pci/devices/" + sysfsName(disk.controller) + "/host0/target0:0:0/0:0:0:0";
}

// The disk's own folder, where "removable" and "size" are.
std::string diskFolder(Disk const& disk)
{
    return disk.inBlockFolder ? scsiFolder(disk) + "/block/" + disk.name
                              : "/sys/block/" + disk.name;
}

void addDiskAttributes(Disk const& disk, Tree& tree)
{
    add(tree, diskFolder(disk) + "/removable", Node::Kind::File, disk.removable ? "1\n" : "0\n");
    add(tree, diskFolder(disk) + "/size", Node::Kind::File, std::to_string(disk.bytes / 512) + "\n");
}

// The PCI functions' folders, or only the one named `only`, with their
// disks. Compared by location: a server of many disks asks once per folder.
void addSysfsDevices(Machine const& machine, std::string const& only, Tree& tree)
{
    addFolder(tree, "/sys/bus/pci/devices");
    unsigned bus = 0, device = 0, function = 0;
    bool one = !only.empty();
    if (one && std::sscanf(only.c_str(), "0000:%2x:%2x.%1u", &bus, &device, &function) != 3)
        return;
    PciLocation const wanted{static_cast<std::uint8_t>(bus), static_cast<std::uint8_t>(device),
                             static_cast<std::uint8_t>(function)};
    // Only the kernel's exact spelling names a function ("0000:0:1.0" does not).
    if (one && sysfsName(wanted) != only)
        return;
    for (auto const& located : machine.bridge().functions())
        if (!one || located.first == wanted)
            // As in the kernel's tree: a link back up, which a walk must not follow.
            add(tree, "/sys/bus/pci/devices/" + sysfsName(located.first) + "/subsystem",
                Node::Kind::Link, "/sys/bus/pci");
    for (Disk const& disk : machine.disks())
    {
        if (one && !(disk.controller == wanted))
            continue;
        if (disk.inBlockFolder)
        {
            add(tree, diskFolder(disk) + "/device", Node::Kind::Link, scsiFolder(disk));
            addDiskAttributes(disk, tree);
        }
        else
            add(tree, scsiFolder(disk) + "/block:" + disk.name, Node::Kind::Link,
                "/sys/block/" + disk.name);
    }
}

// "/sys/block", or only the disk named `only`.
void addSysBlock(Machine const& machine, std::string const& only, Tree& tree)
{
    addFolder(tree, "/sys/block");
    for (Disk const& disk : machine.disks())
    {
        if (!only.empty() && only != disk.name)
            continue;
        if (disk.inBlockFolder)
            add(tree, "/sys/block/" + disk.name, Node::Kind::Link, diskFolder(disk));
        else
            addDiskAttributes(disk, tree);
    }
}

std::vector<std::string> pieces(std::string const& path)
{
    std::vector<std::string> found;
    for (std::size_t at = 0; at < path.size();)
    {
        std::size_t slash = path.find('/', at);
        if (slash == std::string::npos)
            slash = path.size();
        if (slash > at)
            found.push_back(path.substr(at, slash - at));
        at = slash + 1;
    }
    return found;
}

// The part of the tree that `path` lies in: building all of it for every
// question would cost a server of many disks seconds per page.
Tree reachable(Machine const& machine, std::vector<std::string> const& names)
{
    Tree tree;
    addFolder(tree, "/proc");
    addFolder(tree, "/sys/bus/pci/devices");
    addFolder(tree, "/sys/block");
    auto name = [&](std::size_t i) { return i < names.size() ? names[i] : std::string(); };
    if (name(0) == "proc")
    {
        if (!machine.faults().noProcBusPci && name(1) == "bus")
            addProcBusPci(machine, busNamed(name(3)), name(3) == "devices", tree);
        if (machine.hasVlmpci())
            add(tree, "/proc/vlmpci", Node::Kind::File, vlmpci(machine));
        add(tree, "/proc/devices", Node::Kind::File, devices(machine));
    }
    else if (name(0) == "sys" && name(1) == "bus")
        addSysfsDevices(machine, name(4), tree);
    else if (name(0) == "sys" && name(1) == "block")
        addSysBlock(machine, name(2), tree);
    return tree;
}

// Finds the node of `path`, following symbolic links on the way and at the
// end; `tree` is left holding it and `resolved` its own path.
Node const* find(Machine const& machine, std::string path, Tree& tree, std::string& resolved)
{
    for (int links = 0; links < 16; ++links)
    {
        std::vector<std::string> names = pieces(path);
        tree = reachable(machine, names);
        resolved.clear();
        static Node const root;
        Node const* node = &root;
        bool followed = false;
        for (std::size_t i = 0; i < names.size() && !followed; ++i)
        {
            resolved += "/" + names[i];
            auto at = tree.find(resolved);
            if (at == tree.end())
                return nullptr;
            node = &at->second;
            if (node->kind == Node::Kind::Link)
            {
                std::string rest;
                for (std::size_t j = i + 1; j < names.size(); ++j)
                    rest += "/" + names[j];
                path = node->contents + rest;
                followed = true;
            }
        }
        if (!followed)
            return node;
    }
    return nullptr; // a loop of links (ELOOP)
}
} // namespace

bool ProcTree::read(Machine const& machine, std::string const& path, std::string& contents)
{
    Tree tree;
    std::string resolved;
    Node const* node = find(machine, path, tree, resolved);
    if (node == nullptr || node->kind != Node::Kind::File)
        return false;
    contents = node->contents;
    return true;
}

bool ProcTree::list(Machine const& machine, std::string const& path, std::vector<Entry>& entries)
{
    Tree tree;
    std::string resolved;
    Node const* node = find(machine, path, tree, resolved);
    if (node == nullptr || node->kind != Node::Kind::Folder)
        return false;
    std::string const prefix = resolved + "/";
    for (auto at = tree.lower_bound(prefix);
         at != tree.end() && at->first.compare(0, prefix.size(), prefix) == 0; ++at)
    {
        std::string name = at->first.substr(prefix.size());
        if (name.find('/') == std::string::npos)
            entries.push_back(Entry{name, at->second.kind == Node::Kind::Folder,
                                    at->second.kind == Node::Kind::Link});
    }
    return true;
}

} // namespace Sim
