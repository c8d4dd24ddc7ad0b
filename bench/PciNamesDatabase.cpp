#include "PciNamesDatabase.h"
#include "BenchTiming.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace
{
bool isHex(const std::string& s, size_t at, size_t n)
{
    if (s.size() < at + n)
        return false;
    for (size_t i = at; i < at + n; ++i)
        if (!std::isxdigit(static_cast<unsigned char>(s[i])))
            return false;
    return true;
}

std::string escape(const std::string& s)
{
    std::string out;
    for (char c : s)
    {
        if (c == '&')
            out += "&amp;";
        else if (c == '<')
            out += "&lt;";
        else if (c == '>')
            out += "&gt;";
        else
            out += c;
    }
    return out;
}

std::string key(unsigned vendor, unsigned device, unsigned subsystem)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%04X%04X%08X", vendor, device, subsystem);
    return buffer;
}

// Vendor "vvvv  name", device "\tdddd  name", subsystem "\t\tssss ssss  name";
// the class list that follows the first "C " line is not read.
std::vector<Entry> readPciIds(const char* path)
{
    std::vector<Entry> entries;
    std::ifstream in(path);
    std::string line;
    unsigned vendor = 0;
    unsigned device = 0;
    bool haveVendor = false;
    bool haveDevice = false;
    while (std::getline(in, line))
    {
        if (line.compare(0, 2, "C ") == 0)
            break;
        if (isHex(line, 0, 4) && line.compare(4, 2, "  ") == 0)
        {
            vendor = std::stoul(line.substr(0, 4), nullptr, 16);
            haveVendor = true;
            haveDevice = false;
        }
        else if (haveVendor && line.size() > 7 && line[0] == '\t' && line[1] != '\t' &&
                 isHex(line, 1, 4) && line.compare(5, 2, "  ") == 0)
        {
            device = std::stoul(line.substr(1, 4), nullptr, 16);
            haveDevice = true;
            entries.push_back({key(vendor, device, 0), escape(line.substr(7))});
        }
        else if (haveDevice && line.size() > 13 && line.compare(0, 2, "\t\t") == 0 &&
                 isHex(line, 2, 4) && line[6] == ' ' && isHex(line, 7, 4) &&
                 line.compare(11, 2, "  ") == 0)
        {
            unsigned subvendor = std::stoul(line.substr(2, 4), nullptr, 16);
            unsigned subdevice = std::stoul(line.substr(7, 4), nullptr, 16);
            entries.push_back(
                {key(vendor, device, subvendor << 16 | subdevice), escape(line.substr(13))});
        }
    }
    return entries;
}

std::string document(const std::vector<Entry>& entries)
{
    std::string doc = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                      "<!-- PCI names database, generated from pci.ids -->\n"
                      "<AllBoards>\n  <PCI>\n";
    for (const Entry& e : entries)
        doc += "    <dev id=\"" + e.id + "\">\n      <name>" + e.name + "</name>\n    </dev>\n";
    doc += "  </PCI>\n</AllBoards>\n";
    return doc;
}
} // namespace

BenchDatabase::BenchDatabase(const char* program, int argc, char** argv, int defaultRuns)
{
    const char* ids = argc > 1 ? argv[1] : "/usr/share/misc/pci.ids";
    runs = std::max(argc > 2 ? std::atoi(argv[2]) : defaultRuns, 1);
    entries = readPciIds(ids);
    if (entries.empty())
    {
        std::fprintf(stderr, "%s: no entries read from %s (Debian package hwdata)\n", program, ids);
        std::exit(1);
    }
    const std::string text = document(entries);
    bytes = text.size();
    path = file.name().c_str();
    writeFile(path, text);
}
