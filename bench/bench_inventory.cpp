// bench_inventory: loading the PCI names database (generated from pci.ids,
// see PciNamesDatabase.h) and naming every storage controller of a simulated
// server with 16 of them, against "xmllint --noout" on the same file, in the
// same run.
//
//   ours:    Collection::AllBoards over the file (read, parse, index,
//            release); then the same with deviceName for each of the 16
//            controllers, each a look-up in the index; then the same with
//            the whole inventory document built (PCI enumeration of the
//            simulated server, ranks, sysfs) in place of the bare naming;
//   xmllint: one "xmllint --noout FILE" run (start, parse, release, exit).
// Runs are interleaved and the best CPU time of each counts (the machines are
// shared, so wall time mostly measures waiting for a core). The figures are
// reported. The program fails if a controller is not named from the database
// or xmllint rejects the file.
//
// Usage: bench_inventory [pci.ids] [runs]
#include "BenchTiming.h"
#include "PciNamesDatabase.h"
#include "ProcessClock.h"

#include "collection/AllBoards.h"
#include "collection/AllStorage.h"
#include "collection/PCIStorageControllers.h"
#include "sim/SimulatedHardware.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{
const unsigned kControllers = 16;

struct Board
{
    unsigned vendor;
    unsigned device;
    unsigned subsystem;
};

// 16 boards spread over the database, the last entry among them.
std::vector<Board> boardsFrom(const std::vector<Entry>& entries)
{
    std::vector<Board> boards;
    for (unsigned i = 1; i <= kControllers; ++i)
    {
        const std::string& id = entries[(entries.size() - 1) * i / kControllers].id;
        boards.push_back({static_cast<unsigned>(std::stoul(id.substr(0, 4), nullptr, 16)),
                          static_cast<unsigned>(std::stoul(id.substr(4, 4), nullptr, 16)),
                          static_cast<unsigned>(std::stoul(id.substr(8, 8), nullptr, 16))});
    }
    return boards;
}

// One SAS controller per board, each on a bus of its own with one disk.
void addControllers(Sim::Machine& machine, const std::vector<Board>& boards)
{
    for (unsigned i = 0; i < boards.size(); ++i)
    {
        const std::uint8_t bus = static_cast<std::uint8_t>(0x10 + i);
        machine
            .addFunction({bus, 0, 0}, static_cast<std::uint16_t>(boards[i].vendor),
                         static_cast<std::uint16_t>(boards[i].device), 0x01, 0x07)
            .subsystem(static_cast<std::uint16_t>(boards[i].subsystem >> 16),
                       static_cast<std::uint16_t>(boards[i].subsystem));
        machine.addDisk({{bus, 0, 0},
                         "sd" + std::string(1, static_cast<char>('a' + i)),
                         300000000000ull,
                         false,
                         i % 2 == 1});
    }
}

// Loads the database and names every controller; the number named from it.
unsigned nameControllers(const char* file, const Collection::PCIStorageControllers& controllers)
{
    const Collection::AllBoards boards(file);
    unsigned named = 0;
    for (auto it = controllers.begin(); it != controllers.end(); ++it)
        if (boards.deviceName(it->vendorID(), it->deviceID(), it->subsystemID()) !=
            "Integrated PCI IDE Controller")
            ++named;
    return named;
}

void loadDatabase(const char* file)
{
    const Collection::AllBoards boards(file);
}

void buildInventory(const char* file)
{
    Common::shared_ptr<Collection::AllBoards> boards(new Collection::AllBoards(file));
    Collection::AllStorage storage(boards);
}
} // namespace

int main(int argc, char** argv)
{
    BenchDatabase database;
    if (!prepareDatabase("bench_inventory", argc, argv, 5, database))
        return 1;
    const std::vector<Entry>& entries = database.entries;
    const int runs = database.runs;
    const char* file = database.path.c_str();

    Sim::Machine machine;
    addControllers(machine, boardsFrom(entries));
    Sim::SimulatedHardware server(machine);
    if (!server.install())
    {
        std::fprintf(stderr, "bench_inventory: the simulated server was refused\n");
        unlink(file);
        return 1;
    }
    const Collection::PCIStorageControllers controllers;

    Clock lint = {0, 0};
    // Also the warm-up: page cache, dynamic loader, the pools.
    const unsigned named = nameControllers(file, controllers);
    if (named != kControllers || !timeXmllint("bench_inventory", file, lint))
    {
        std::fprintf(stderr, "bench_inventory: %u of %u controllers named\n", named, kControllers);
        unlink(file);
        return 1;
    }

    const Clock none = {1e9, 1e9};
    Clock bestLoading = none;
    Clock bestNaming = none;
    Clock bestInventory = none;
    Clock bestLint = none;
    for (int i = 0; i < runs; ++i)
    {
        Clock start = now();
        loadDatabase(file);
        bestLoading = best(bestLoading, since(start));
        start = now();
        nameControllers(file, controllers);
        bestNaming = best(bestNaming, since(start));
        start = now();
        buildInventory(file);
        bestInventory = best(bestInventory, since(start));
        if (!timeXmllint("bench_inventory", file, lint))
        {
            unlink(file);
            return 1;
        }
        bestLint = best(bestLint, lint);
    }
    unlink(file);

    std::printf("names database: %zu entries; %u storage controllers; best of %d runs\n",
                entries.size(), kControllers, runs);
    reportRatio("load names database vs xmllint --noout (CPU time)", bestLoading.cpu, bestLint.cpu,
                0);
    reportRatio("load names database and name 16 controllers vs xmllint --noout (CPU time)",
                bestNaming.cpu, bestLint.cpu, 0);
    reportRatio("load names database and build the inventory vs xmllint --noout (CPU time)",
                bestInventory.cpu, bestLint.cpu, 0);
    return 0;
}
