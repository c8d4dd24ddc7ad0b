#pragma once

#include <filesystem>

namespace Sim
{

class Machine;

// Writes the files the kernel would show for a machine under `root`:
// "proc/bus/pci" (one directory per bus, one file per function holding its
// configuration space, and the "devices" file), "proc/vlmpci", and the sysfs
// entries of storage controllers and their disks ("sys/bus/pci/devices",
// "sys/block").
//
// The files are a snapshot: writes through them do not reach the simulated
// bridge, and later changes to the machine need another write.
class ProcTree
{
public:
    static void write(Machine const& machine, std::filesystem::path const& root);
};

} // namespace Sim
