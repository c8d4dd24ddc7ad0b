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
#include "ExecutionWay.h"
#include "PciNamesDatabase.h"
#include "ProcessClock.h"

#include "collection/AllBoards.h"
#include "collection/AllStorage.h"
#include "common/XMLElement.h"
#include "sim/SimulatedHardware.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{
const unsigned kSizes[] = {8, 64, 512};
const unsigned kMostControllers = 512;
const unsigned kDisksPerController = 16;
const unsigned kControllersPerBus = 32;
const unsigned kFirstBus = 0x10;
const double kGoal = 1.5;
const char kUnnamed[] = "Integrated PCI IDE Controller";

struct Board
{
    std::uint16_t vendor;
    std::uint16_t device;
    std::uint32_t subsystem;
};

// The board of controller `index`: entries picked by a multiplicative hash
// of the index, so that the first 8 controllers reach all over the database
// as well as all 512 do.
Board boardOf(const std::vector<Entry>& entries, unsigned index)
{
    const std::string& id = entries[(index * 2654435761u + entries.size() - 1) % entries.size()].id;
    return {static_cast<std::uint16_t>(std::stoul(id.substr(0, 4), nullptr, 16)),
            static_cast<std::uint16_t>(std::stoul(id.substr(4, 4), nullptr, 16)),
            static_cast<std::uint32_t>(std::stoul(id.substr(8, 8), nullptr, 16))};
}

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
        const Board board = boardOf(entries, i);
        machine.addFunction(at, board.vendor, board.device, 0x01, 0x07)
            .subsystem(static_cast<std::uint16_t>(board.subsystem >> 16),
                       static_cast<std::uint16_t>(board.subsystem));
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

Clock timeInventory(const Common::shared_ptr<Collection::AllBoards>& boards)
{
    const Clock start = now();
    const Collection::AllStorage storage(boards);
    storage.toXMLString();
    return since(start);
}

Clock timePage(const char* database, const char* output)
{
    const Clock start = now();
    Common::shared_ptr<Collection::AllBoards> boards(new Collection::AllBoards(database));
    Collection::AllStorage(boards).Save(output);
    return since(start);
}

void reportGrowth(const char* name, const double perController[], double goal)
{
    const double ratio = perController[2] / perController[0];
    std::printf("%s: 8 controllers %.6f s, 64 controllers %.6f s, 512 controllers %.6f s per "
                "controller, ratio %.2f",
                name, perController[0], perController[1], perController[2], ratio);
    if (goal > 0)
        std::printf(" (goal <= %.2f: %s)", goal, ratio <= goal ? "met" : "MISSED");
    else
        std::printf(" (reported)");
    std::printf(" [every size: %s]\n", ourWay());
}
} // namespace

int main(int argc, char** argv)
{
    BenchDatabase database;
    if (!prepareDatabase("bench_inventory_scale", argc, argv, 3, database))
        return 1;
    const char* file = database.path.c_str();
    const std::string output = database.path + ".allstorage.xml";

    Sim::Machine machine;
    Sim::SimulatedHardware server(machine);
    if (!server.install())
    {
        std::fprintf(stderr, "bench_inventory_scale: the simulated server was refused\n");
        unlink(file);
        return 1;
    }
    const Common::shared_ptr<Collection::AllBoards> boards(new Collection::AllBoards(file));

    const Clock none = {1e9, 1e9};
    Clock fixed = none;
    for (int run = 0; run < database.runs; ++run)
        fixed = best(fixed, timePage(file, output.c_str()));

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
        {
            unlink(file);
            unlink(output.c_str());
            return 1;
        }
        Clock bestInventory = none;
        Clock bestPage = none;
        for (int run = 0; run < database.runs; ++run)
        {
            bestInventory = best(bestInventory, timeInventory(boards));
            bestPage = best(bestPage, timePage(file, output.c_str()));
        }
        inventory[s] = bestInventory.cpu / size;
        page[s] = bestPage.cpu / size;
    }
    unlink(file);
    unlink(output.c_str());

    std::printf("names database: %zu entries; up to %u storage controllers with %u disks each; "
                "best of %d runs, CPU time\n",
                database.entries.size(), kMostControllers, kDisksPerController, database.runs);
    reportGrowth("storage inventory per controller, 512 vs 8", inventory, kGoal);
    std::printf("allstorage.nsp Create with no controller (loading the names database): %.6f s\n",
                fixed.cpu);
    reportGrowth("allstorage.nsp Create per controller, 512 vs 8", page, 0);
    return 0;
}
