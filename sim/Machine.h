#pragma once

#include "sim/EnvironmentStore.h"
#include "sim/HostBridge.h"
#include "sim/ManagementController.h"
#include "sim/NvramController.h"
#include "sim/PhysicalMemory.h"
#include "sim/RomStub.h"
#include "sim/SimClock.h"
#include "sim/SmbiosBuilder.h"

#include "platform/RomCallRegisters.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Sim
{

// Failures the machine can be told to show behind the hardware seam.
struct Faults
{
    bool noPhysicalMemory = false; // "/dev/mem" does not open
    bool noMemoryMapping = false;  // mapping physical memory fails
    bool noIOPrivilege = false;    // iopl(3) fails: ports read all ones
    bool noProcBusPci = false;     // "/proc/bus/pci" is missing
    // Every n-th read or listing under "/proc" and "/sys" finds nothing, as
    // when the kernel removes devices during a walk (0: none vanishes).
    unsigned vanishingEvery = 0;
};

// One entry line of "/proc/vlmpci".
struct RoutingLine
{
    PciLocation at;
    std::uint8_t slot = 0;
    std::uint8_t link = 0x60;
    std::uint16_t bitmap = 0xDEB8;
};

// A disk attached to a storage controller, as sysfs shows it.
struct Disk
{
    PciLocation controller;
    std::string name; // kernel name, e.g. "sda"
    std::uint64_t bytes = 0;
    bool removable = false;
    // Where the controller's folder shows the disk: false for the older
    // kernels' "block:<name>" link, true for current kernels' "block" folder
    // holding a folder "<name>".
    bool inBlockFolder = false;
};

// One entry of the ROM's initial-program-load table.
struct IplEntry
{
    std::uint16_t type = 0;
    PciLocation at;
    std::string description;
};

// One reboot system call: its arguments and the simulated time it came at.
struct RebootCall
{
    int magic = 0;
    int magic2 = 0;
    int command = 0;
    std::uint64_t at = 0;
};

// Where the SMBIOS entry point and table go, and entry-point values that
// differ from the table's real length and count (for broken tables).
struct EntryPointPlacement
{
    std::uint32_t anchor = 0xF0010;
    std::uint32_t table = 0xF1000;
    std::optional<std::uint16_t> length;
    std::optional<std::uint16_t> count;
};

// A simulated server: physical memory below 1 MiB with its BIOS area, a PCI
// host bridge with the machine's functions, the NVRAM controller, the files
// of "/proc" and "/sys", a clock, and injectable faults. Tests describe one
// in a few lines and hand it to SimulatedHardware.
//
// Memory map of the BIOS area: 0xE0000..0xEFFFF is kept free for ROM
// services (service directories and entry points); the SMBIOS entry point
// sits at 0xF0010 and its table at 0xF1000 unless placed elsewhere; the IPL
// table at 0xF4000; "NVRM" at 0xFFFD9 and "VELMAR" at 0xFFFEA when signed.
class Machine
{
public:
    using RomService = std::function<void(RomCallRegisters&)>;
    struct RomEntry
    {
        RomReturn returns;
        RomService service;
    };

    Machine() = default;
    Machine(Machine const&) = delete;
    Machine& operator=(Machine const&) = delete;

    PhysicalMemory& memory() { return m_memory; }
    HostBridge& bridge() { return m_bridge; }
    HostBridge const& bridge() const { return m_bridge; }
    SimClock& clock() { return m_clock; }
    Faults& faults() { return m_faults; }
    Faults const& faults() const { return m_faults; }

    PciFunction& addFunction(PciLocation at, std::uint16_t vendor, std::uint16_t device,
                             std::uint8_t baseClass, std::uint8_t subclass);
    // A PCI-to-PCI bridge whose secondary bus is `secondary`.
    PciFunction& addBridge(PciLocation at, std::uint8_t secondary);
    // `deviceId` should be 0xA0F0, 0x00D7 or 0xB203 to be recognised.
    NvramController& addNvramController(PciLocation at, std::uint16_t deviceId = 0xA0F0);

    void installSmbios(SmbiosBuilder const& builder, EntryPointPlacement placement = {});
    void signVelmar();
    void signNvram();
    void installIplTable(std::vector<IplEntry> const& entries, std::uint32_t address = 0xF4000);

    // "/proc/vlmpci" exists once a line is added (or provideVlmpci is called).
    void addRoutingLine(RoutingLine const& line);
    void provideVlmpci() { m_hasVlmpci = true; }
    bool hasVlmpci() const { return m_hasVlmpci; }
    std::vector<RoutingLine> const& routingLines() const { return m_routingLines; }

    // A bus directory under "/proc/bus/pci" with no function in it.
    void addEmptyBusDirectory(std::uint8_t bus) { m_emptyBuses.insert(bus); }
    std::set<std::uint8_t> const& emptyBusDirectories() const { return m_emptyBuses; }

    // Throws std::invalid_argument when another disk has the same kernel
    // name: both would be "/sys/block/<name>".
    void addDisk(Disk const& disk);
    std::vector<Disk> const& disks() const { return m_disks; }

    // Places the code stub of `service` at physical address `entry`: the ROM
    // call enters it there and it returns as `returns` says.
    void addRomService(std::uint32_t entry, RomReturn returns, RomService service);
    RomEntry const* romService(std::uint32_t entry) const;

    // The environment variables behind the ROM's INT 15h functions, and the
    // interrupt-routing table its PCI BIOS hands out (sim/RomServices.h puts
    // the services in place).
    EnvironmentStore& environment() { return m_environment; }
    void addRomRoute(RoutingLine const& route) { m_romRoutes.push_back(route); }
    std::vector<RoutingLine> const& romRoutes() const { return m_romRoutes; }

    std::uint32_t readPort(std::uint16_t port, unsigned width);
    void writePort(std::uint16_t port, unsigned width, std::uint32_t value);

    // The management controller behind the IPMI driver; none until added.
    ManagementController& addManagementController() { return m_controller.emplace(); }
    ManagementController* managementController() { return m_controller ? &*m_controller : nullptr; }
    ManagementController const* managementController() const
    {
        return m_controller ? &*m_controller : nullptr;
    }

    // What the module asked of the machine.
    std::vector<std::string> const& loadedKernelModules() const { return m_loadedModules; }
    // The majors of the "/dev/ipmi0" nodes made, in order.
    std::vector<unsigned> const& ipmiNodesMade() const { return m_ipmiNodes; }
    void recordKernelModule(std::string const& name) { m_loadedModules.push_back(name); }
    void recordIPMINode(unsigned major) { m_ipmiNodes.push_back(major); }
    std::vector<RebootCall> const& reboots() const { return m_reboots; }
    // Records the call and runs the hook given to atReboot, if any.
    void recordReboot(RebootCall const& call);
    // `hook` runs at every reboot call, when the machine would go down: it
    // can look at what the module had done by then.
    void atReboot(std::function<void()> hook) { m_atReboot = std::move(hook); }

private:
    PhysicalMemory m_memory;
    HostBridge m_bridge;
    SimClock m_clock;
    Faults m_faults;
    bool m_hasVlmpci = false;
    std::vector<RoutingLine> m_routingLines;
    std::set<std::uint8_t> m_emptyBuses;
    std::vector<Disk> m_disks;
    std::set<std::string> m_diskNames;
    std::map<std::uint32_t, RomEntry> m_rom;
    EnvironmentStore m_environment;
    std::vector<RoutingLine> m_romRoutes;
    std::optional<ManagementController> m_controller;
    std::vector<std::string> m_loadedModules;
    std::vector<unsigned> m_ipmiNodes;
    std::vector<RebootCall> m_reboots;
    std::function<void()> m_atReboot;
};

} // namespace Sim
