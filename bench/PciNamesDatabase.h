#pragma once

// The PCI names database of the benchmarks, generated from Debian's pci.ids
// (package hwdata): one element "dev" per device line (subsystem value 0) and
// one per subsystem line, keyed "%04X%04X%08X" from vendor, device and
// subvendor<<16|subdevice, with the display name in a child "name" -- about
// 33,000 entries, a few megabytes, indented, after an XML declaration and one
// comment.

#include <string>
#include <vector>

struct Entry
{
    std::string id;
    std::string name; // as written, with &, < and > escaped
};

// The entries of a pci.ids file; empty when it cannot be read.
std::vector<Entry> readPciIds(const char* path);
// The database document of the entries.
std::string document(const std::vector<Entry>& entries);

// A benchmark's database, from its arguments "[pci.ids] [runs]": the entries
// of the pci.ids file (default /usr/share/misc/pci.ids) written as a database
// to a fresh file in $TMPDIR (else /tmp), which the caller removes, and the
// number of runs (default `defaultRuns`, at least 1).
struct BenchDatabase
{
    std::vector<Entry> entries;
    std::string path;
    std::size_t bytes;
    int runs;
};
// False, with a message naming `program`, when no entry can be read or the
// file cannot be written.
bool prepareDatabase(const char* program, int argc, char** argv, int defaultRuns,
                     BenchDatabase& database);
