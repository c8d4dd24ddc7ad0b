#include "collection/AllBoards.h"
#include "collection/AllStorage.h"

#include "tests/support/SimulatedServer.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{
const char kUnnamed[] = "Integrated PCI IDE Controller";
const unsigned kControllers = 64;

// One element of the names database, in document order.
struct Entry
{
    std::string tag;  // "dev" to count
    std::string id;   // as written
    bool hasName;     // with a child "name"
    std::string name; // its text
    bool inFirstPCI;  // under the first "PCI" element (else under a later one)
};

struct Board
{
    unsigned vendor;
    unsigned device;
    unsigned subsystem;
};

std::string key(const Board& board)
{
    char text[17];
    std::snprintf(text, sizeof text, "%04X%04X%08X", board.vendor, board.device, board.subsystem);
    return text;
}

std::string lowerCase(std::string text)
{
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

// Controller i: two buses of 32 devices; vendors repeat, devices do not;
// every third one has subsystem 0.
Board boardOf(unsigned i)
{
    return {0x1A00u + i % 5, 0x0100u + i, i % 3 == 0 ? 0u : 0x3C4D0000u | i};
}

// The database of the 64 boards, a different case for each i % 8, with
// unrelated entries in between.
std::vector<Entry> namesFor(unsigned controllers)
{
    std::vector<Entry> entries;
    auto add = [&](const std::string& tag, const std::string& id, bool hasName,
                   const std::string& name, bool inFirstPCI = true)
    { entries.push_back({tag, id, hasName, name, inFirstPCI}); };
    for (unsigned i = 0; i < controllers; ++i)
    {
        const Board board = boardOf(i);
        const std::string id = key(board);
        const std::string label = "Board " + std::to_string(i);
        // Neighbours: the same digits in another order, and keys one off.
        add("dev", key({board.device, board.vendor, board.subsystem}), true, label + " swapped");
        add("dev", key({board.vendor, board.device, board.subsystem + 1}), true, label + " next");
        switch (i % 8)
        {
        case 0: // one entry
            add("dev", id, true, label);
            break;
        case 1: // three entries: the last one wins
            add("dev", id, true, label + " first");
            add("dev", key(boardOf(i + 1)) + "0", true, label + " too long");
            add("dev", id, true, label + " second");
            add("dev", id, true, label + " last");
            break;
        case 2: // a later entry without a name leaves the earlier one
            add("dev", id, true, label + " named");
            add("dev", id, false, "");
            break;
        case 3: // written in lower case: never matches
            add("dev", lowerCase(id), true, label + " lower case");
            break;
        case 4: // not in the database
            break;
        case 5: // an empty name
            add("dev", id, true, "");
            break;
        case 6: // only where entries do not count
            add("item", id, true, label + " not a dev");
            add("dev", id, true, label + " second PCI", false);
            add("dev", " " + id, true, label + " with a blank");
            break;
        case 7: // named twice with others between: the last one wins
            add("dev", id, true, label + " old");
            add("dev", key({board.vendor, board.device, 0}), true, label + " without subsystem");
            add("dev", id, true, label + " new");
            break;
        }
    }
    return entries;
}

std::string document(const std::vector<Entry>& entries)
{
    std::string first;
    std::string later;
    for (const Entry& entry : entries)
    {
        std::string text = "<" + entry.tag + " id=\"" + entry.id + "\">" +
                           (entry.hasName ? "<name>" + entry.name + "</name>" : "<label/>") +
                           "</" + entry.tag + ">\n";
        (entry.inFirstPCI ? first : later) += text;
    }
    return "<?xml version=\"1.0\"?>\n<AllBoards>\n<PCI>\n" + first + "</PCI>\n<PCI>\n" + later +
           "</PCI>\n</AllBoards>\n";
}

// The name a walk over every entry gives: the last counting entry with the
// board's key, else the catch-all label.
std::string scannedName(const std::vector<Entry>& entries, const Board& board)
{
    std::string name = kUnnamed;
    for (const Entry& entry : entries)
        if (entry.inFirstPCI && entry.tag == "dev" && entry.id == key(board) && entry.hasName)
            name = entry.name;
    return name;
}

struct ScratchFile
{
    explicit ScratchFile(const std::string& text)
        : path(fs::temp_directory_path() / ("tidewell-allboards-" + std::to_string(getpid())))
    {
        std::ofstream(path, std::ios::binary) << text;
    }
    ~ScratchFile() { fs::remove(path); }
    fs::path path;
};

std::string attribute(const Common::XML::Element& element, const char* name)
{
    return element.attribute(name).c_str();
}
} // namespace

TEST(AllBoards, InventoryOfManyControllersNamesEachAsAWalkOverTheDatabaseWould)
{
    Sim::Machine machine;
    for (unsigned i = 0; i < kControllers; ++i)
    {
        const Board board = boardOf(i);
        machine
            .addFunction({static_cast<std::uint8_t>(0x20 + i / 32), static_cast<std::uint8_t>(i % 32),
                          0},
                         static_cast<std::uint16_t>(board.vendor),
                         static_cast<std::uint16_t>(board.device), 0x01, 0x07)
            .subsystem(static_cast<std::uint16_t>(board.subsystem >> 16),
                       static_cast<std::uint16_t>(board.subsystem));
    }
    auto check = [](Sim::Machine&)
    {
        const std::vector<Entry> entries = namesFor(kControllers);
        const ScratchFile file(document(entries));
        Common::shared_ptr<Collection::AllBoards> boards(
            new Collection::AllBoards(file.path.string().c_str()));
        const Collection::AllStorage storage(boards);

        std::map<std::string, std::string> names; // "bus:device" -> Name
        const Common::shared_ptr<Common::XML::Element> root = storage.toXML();
        for (auto it = root->elementBegin(); it != root->elementEnd(); ++it)
            names[attribute(**it, "Bus") + ":" + attribute(**it, "Device")] =
                attribute(**it, "Name");
        ASSERT_EQ(kControllers, names.size());
        for (unsigned i = 0; i < kControllers; ++i)
        {
            char at[8];
            std::snprintf(at, sizeof at, "%02X:%02X", 0x20 + i / 32, i % 32);
            EXPECT_EQ(scannedName(entries, boardOf(i)), names[at]) << "controller " << i;
        }

        // The walk itself, on a few cases written out.
        EXPECT_EQ("Board 8", names["20:08"]);
        EXPECT_EQ("Board 9 last", names["20:09"]);
        EXPECT_EQ("Board 10 named", names["20:0A"]);
        EXPECT_EQ(kUnnamed, names["20:0B"]);
        EXPECT_EQ(kUnnamed, names["20:0C"]);
        EXPECT_EQ("", names["20:0D"]);
        EXPECT_EQ(kUnnamed, names["20:0E"]);
        EXPECT_EQ("Board 63 new", names["21:1F"]);
    };
    onSimulatedServer(machine, check);
}

TEST(AllBoards, DeviceNameIsTheLastCountingEntryOrTheCatchAllLabel)
{
    const std::vector<Entry> entries = namesFor(kControllers);
    const ScratchFile file(document(entries));
    const Collection::AllBoards boards(file.path.string().c_str());
    for (unsigned i = 0; i < kControllers; ++i)
    {
        const Board board = boardOf(i);
        EXPECT_EQ(scannedName(entries, board),
                  boards
                      .deviceName(static_cast<unsigned short>(board.vendor),
                                  static_cast<unsigned short>(board.device), board.subsystem)
                      .c_str())
            << "board " << i;
    }
    EXPECT_EQ(kUnnamed, std::string(boards.deviceName(0xFFFF, 0xFFFF, 0xFFFFFFFFu).c_str()));
    const Collection::AllBoards missing((file.path.string() + ".missing").c_str());
    EXPECT_EQ(kUnnamed, std::string(missing.deviceName(0x1A00, 0x0100, 0).c_str()));
}
