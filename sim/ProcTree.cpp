#include "sim/ProcTree.h"

#include "sim/Machine.h"

#include <cstdio>
#include <fstream>

namespace Sim
{

namespace fs = std::filesystem;

namespace
{
std::string hex(unsigned value, int digits)
{
    char text[16];
    std::snprintf(text, sizeof text, "%0*x", digits, value);
    return text;
}

void writeFile(fs::path const& path, std::string const& bytes)
{
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

void writeProcBusPci(Machine const& machine, fs::path const& base)
{
    fs::create_directories(base);
    std::string devices;
    for (auto const& [at, function] : machine.bridge().functions())
    {
        auto const& config = function->config();
        std::size_t size = std::min<std::size_t>(function->procFileSize(), config.size());
        writeFile(base / hex(at.bus, 2) / (hex(at.device, 2) + "." + hex(at.function, 1)),
                  std::string(config.begin(), config.begin() + size));
        unsigned vendor = config[0] | config[1] << 8;
        unsigned device = config[2] | config[3] << 8;
        devices += hex(at.bus, 2) + hex(at.device << 3 | at.function, 2) + "\t" + hex(vendor, 4) +
                   hex(device, 4) + "\n";
    }
    for (std::uint8_t bus : machine.emptyBusDirectories())
        fs::create_directories(base / hex(bus, 2));
    writeFile(base / "devices", devices);
}

void writeVlmpci(Machine const& machine, fs::path const& path)
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
    writeFile(path, text + ")\n");
}

fs::path sysfsDevice(fs::path const& sys, PciLocation at)
{
    return sys / "bus/pci/devices" /
           ("0000:" + hex(at.bus, 2) + ":" + hex(at.device, 2) + "." + std::to_string(at.function));
}

void writeSysfs(Machine const& machine, fs::path const& sys)
{
    fs::create_directories(sys / "bus/pci/devices");
    fs::create_directories(sys / "block");
    for (auto const& located : machine.bridge().functions())
    {
        fs::path device = sysfsDevice(sys, located.first);
        fs::create_directories(device);
        // As in the kernel's tree: a link back up, which a walk must not follow.
        fs::create_directory_symlink(sys / "bus/pci", device / "subsystem");
    }
    for (Disk const& disk : machine.disks())
    {
        fs::path scsi = sysfsDevice(sys, disk.controller) / "host0/target0:0:0/0:0:0:0";
        fs::create_directories(scsi);
        fs::path block = sys / "block" / disk.name;
        if (disk.inBlockFolder)
        {
            fs::path folder = scsi / "block" / disk.name;
            fs::create_directories(folder);
            fs::create_directory_symlink(folder, block);
            fs::create_directory_symlink(scsi, folder / "device");
        }
        else
        {
            fs::create_directories(block);
            fs::create_directory_symlink(block, scsi / ("block:" + disk.name));
        }
        writeFile(block / "removable", disk.removable ? "1\n" : "0\n");
        writeFile(block / "size", std::to_string(disk.bytes / 512) + "\n");
    }
}

// The kernel's device majors; "ipmidev" only where the controller's driver
// lists it.
void writeDevices(Machine const& machine, fs::path const& path)
{
    std::string text = "Character devices:\n  1 mem\n  4 /dev/vc/0\n  5 /dev/tty\n";
    ManagementController const* controller = machine.managementController();
    if (controller != nullptr && controller->listedMajor)
        text += std::to_string(*controller->listedMajor) + " ipmidev\n";
    writeFile(path, text + "\nBlock devices:\n  8 sd\n 11 sr\n254 mdp\n");
}
} // namespace

void ProcTree::write(Machine const& machine, fs::path const& root)
{
    fs::create_directories(root / "proc");
    if (!machine.faults().noProcBusPci)
        writeProcBusPci(machine, root / "proc/bus/pci");
    if (machine.hasVlmpci())
        writeVlmpci(machine, root / "proc/vlmpci");
    writeDevices(machine, root / "proc/devices");
    writeSysfs(machine, root / "sys");
}

} // namespace Sim
