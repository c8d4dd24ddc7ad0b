#pragma once

// The PCI names database of the benchmarks, generated from Debian's pci.ids
// (package hwdata): one element "dev" per device line (subsystem value 0) and
// one per subsystem line, keyed "%04X%04X%08X" from vendor, device and
// subvendor<<16|subdevice, with the display name in a child "name" -- about
// 33,000 entries, a few megabytes, indented, after an XML declaration and one
// comment.

#include "common/filesystem/TemporaryFile.h"

#include <string>
#include <vector>

struct Entry
{
    std::string id;
    std::string name; // as written, with &, < and > escaped
};

// A benchmark's database, from its arguments "[pci.ids] [runs]": the entries
// of the pci.ids file (default /usr/share/misc/pci.ids) written as a database
// to a temporary file (removed with this object), and the number of runs
// (default `defaultRuns`, at least 1). Ends the program with a message naming
// `program` when no entry can be read.
struct BenchDatabase
{
    BenchDatabase(const char* program, int argc, char** argv, int defaultRuns);

    std::vector<Entry> entries;
    Common::Filesystem::TemporaryFile file{"xml", true};
    std::string path; // the file's
    std::size_t bytes;
    int runs;
};
