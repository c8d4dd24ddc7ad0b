// bench_inventory_scale: the storage inventory on simulated servers of 8, 64
// and 512 storage controllers with 16 disks each, named from the full PCI
// names database (generated from pci.ids, see PciNamesDatabase.h).
//
//   inventory: Collection::AllStorage built with the database already
//              loaded (PCI enumeration, ranks, names, sysfs), and its
//              document text;
//   page:      the work of "allstorage.nsp" Command=Create: the database
//              loaded from its file, the inventory built and saved to a file.
// Each is timed per controller (best CPU time of the runs divided by the
// number of controllers). The inventory's figure is the ratio of the
// per-controller time at 512 controllers to that at 8: it stays near 1 when
// nothing costs more per controller on a bigger server. The page's figures
// hold its fixed cost, loading the database (shown apart, measured on the
// same server with no controller), which outweighs 8 controllers: its ratio
// is reported only.
//
// One simulated server grows from 0 to 8, 64 and 512 controllers: a process
// chooses its hardware backend once, and the files of "/proc" and "/sys" are
// rewritten at each size. Controllers are SAS functions, 32 to a bus on
// buses 10..1F, each named by an entry spread over the whole database.
// The program fails if a controller is not named from the database or does
// not show its 16 disks.
//
// Usage: bench_inventory_scale [pci.ids] [runs]
#include "BenchTiming.h"
#include "ExecutionWay.h"
#include "PciNamesDatabase.h"

#include "collection/AllBoards.h"
#include "collection/AllStorage.h"
#include "common/XMLElement.h"
#include "common/filesystem/TemporaryFile.h"
#include "sim/SimulatedHardware.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace
{
const unsigned kSizes[] = {8, 64, 512};
const unsigned kDisksPerController = 16;
const unsigned kControllersPerBus = 32;
const unsigned kFirstBus = 0x10;
const double kGoal = 1.5;
const char kUnnamed[] = "Integrated PCI IDE Controller";

// The kernel's disk names: sda..sdz, sdaa..sdzz, sdaaa...
std::string diskName(unsigned index)
{
    std::string letters;
    for (unsigned n = index + 1; n > 0; n = (n - 1) / 26)
        letters.insert(letters.begin(), static_cast<char>('a' + (n - 1) % 26));
    return "sd" + letters;
}

// Controllers [from, to) with their disks.
void addControllers(Sim::Machine& machine, const std::vector<Entry>& entries, unsigned from,
                    unsigned to)
{
    for (unsigned i = from; i < to; ++i)
    {
        const Sim::PciLocation at = {static_cast<std::uint8_t>(kFirstBus + i / kControllersPerBus),
                                     static_cast<std::uint8_t>(i % kControllersPerBus), 0};
        // Entries picked by a multiplicative hash of the index, so that the
        // first 8 controllers reach all over the database as well as all 512 do.
        const std::string& id = entries[(i * 2654435761u + entries.size() - 1) % entries.size()].id;
        unsigned vendor = 0, device = 0, subvendor = 0, subdevice = 0;
        std::sscanf(id.c_str(), "%4x%4x%4x%4x", &vendor, &device, &subvendor, &subdevice);
        machine.addFunction(at, vendor, device, 0x01, 0x07).subsystem(subvendor, subdevice);
        for (unsigned d = 0; d < kDisksPerController; ++d)
            machine.addDisk({at, diskName(i * kDisksPerController + d), 300000000000ull, false,
                             d % 2 == 1});
    }
}

// False, with a message, unless every controller of the inventory is named
// from the database and shows all its disks.
bool complete(const Collection::AllStorage& storage, unsigned controllers)
{
    const Common::shared_ptr<Common::XML::Element> root = storage.toXML();
    unsigned seen = 0;
    for (auto it = root->elementBegin(); it != root->elementEnd(); ++it, ++seen)
    {
        const Common::XML::Element& device = **it;
        if (device.attribute("Name") == kUnnamed ||
            device.attribute("BlockDeviceCount") != std::to_string(kDisksPerController).c_str())
        {
            std::fprintf(stderr, "bench_inventory_scale: controller %s:%s is \"%s\" with %s disks\n",
                         device.attribute("Bus").c_str(), device.attribute("Device").c_str(),
                         device.attribute("Name").c_str(),
                         device.attribute("BlockDeviceCount").c_str());
            return false;
        }
    }
    if (seen != controllers)
        std::fprintf(stderr, "bench_inventory_scale: %u of %u controllers listed\n", seen,
                     controllers);
    return seen == controllers;
}

double timeInventory(const Common::shared_ptr<Collection::AllBoards>& boards)
{
    const double start = cpuSeconds();
    const Collection::AllStorage storage(boards);
    storage.toXMLString();
    return cpuSeconds() - start;
}

double timePage(const char* database, const char* output)
{
    const double start = cpuSeconds();
    Common::shared_ptr<Collection::AllBoards> boards(new Collection::AllBoards(database));
    Collection::AllStorage(boards).Save(output);
    return cpuSeconds() - start;
}

void reportGrowth(const char* name, const double perController[], double goal)
{
    const double ratio = perController[2] / perController[0];
    std::printf("%s: 8 controllers %.6f s, 64 controllers %.6f s, 512 controllers %.6f s per "
                "controller, ratio %.2f",
                name, perController[0], perController[1], perController[2], ratio);
    printVerdict(ratio, goal);
    std::printf(" [every size: %s]\n", ourWay());
}
} // namespace

int main(int argc, char** argv)
{
    const BenchDatabase database("bench_inventory_scale", argc, argv, 3);
    const char* file = database.path.c_str();
    Common::Filesystem::TemporaryFile output("xml", true);

    Sim::Machine machine;
    Sim::SimulatedHardware server(machine);
    if (!server.install())
    {
        std::fprintf(stderr, "bench_inventory_scale: the simulated server was refused\n");
        return 1;
    }
    const Common::shared_ptr<Collection::AllBoards> boards(new Collection::AllBoards(file));

    double fixed = 1e9;
    for (int run = 0; run < database.runs; ++run)
        fixed = std::min(fixed, timePage(file, output.name().c_str()));

    double inventory[3];
    double page[3];
    unsigned built = 0;
    for (unsigned s = 0; s < 3; ++s)
    {
        const unsigned size = kSizes[s];
        addControllers(machine, database.entries, built, size);
        built = size;
        // Also the warm-up of this size.
        if (!complete(Collection::AllStorage(boards), size))
            return 1;
        double bestInventory = 1e9;
        double bestPage = 1e9;
        for (int run = 0; run < database.runs; ++run)
        {
            bestInventory = std::min(bestInventory, timeInventory(boards));
            bestPage = std::min(bestPage, timePage(file, output.name().c_str()));
        }
        inventory[s] = bestInventory / size;
        page[s] = bestPage / size;
    }

    std::printf("names database: %zu entries; up to %u storage controllers with %u disks each; "
                "best of %d runs, CPU time\n",
                database.entries.size(), kSizes[2], kDisksPerController, database.runs);
    reportGrowth("storage inventory per controller, 512 vs 8", inventory, kGoal);
    std::printf("allstorage.nsp Create with no controller (loading the names database): %.6f s\n",
                fixed);
    reportGrowth("allstorage.nsp Create per controller, 512 vs 8", page, 0);
    return 0;
}
