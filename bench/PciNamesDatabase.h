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
// Writes `text` to a fresh file in $TMPDIR (else /tmp) named after `tag`;
// its path, or "" when it cannot be written.
std::string writeTemporaryFile(const char* tag, const std::string& text);
