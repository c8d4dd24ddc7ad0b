#pragma once

#include <string>
#include <vector>

namespace Sim
{

class Machine;

// The files the kernel shows for a machine under "/proc" and "/sys":
// "/proc/bus/pci" (one folder per bus, one file per function holding its
// configuration space, and the "devices" file), "/proc/vlmpci",
// "/proc/devices", and the sysfs entries of PCI functions and disks
// ("/sys/bus/pci/devices", "/sys/block"), with the kernel's symbolic links.
//
// Every question is answered from the machine as it is at that moment, so
// port writes and later changes show at once. Paths are absolute; symbolic
// links on the way are followed, as the kernel's path walk does.
class ProcTree
{
public:
    struct Entry
    {
        std::string name;
        bool folder;
        bool symbolicLink;
    };

    static bool read(Machine const& machine, std::string const& path, std::string& contents);
    // The entries of a folder, sorted by name.
    static bool list(Machine const& machine, std::string const& path,
                     std::vector<Entry>& entries);
};

} // namespace Sim
