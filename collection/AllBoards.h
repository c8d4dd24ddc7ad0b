#pragma once

#include "collection/BoardNameIndex.h"
#include "common/SharedPtr.h"
#include "common/String.h"
#include "common/XMLElement.h"

namespace Collection
{

// The PCI names database: display names of boards keyed by vendor ID, device
// ID and 32-bit subsystem value, loaded from an XML file whose document
// element holds one "PCI" element of "dev" entries:
//
//   <AllBoards><PCI><dev id="1A2B00C13C4DABCD"><name>Board</name></dev></PCI>
//   </AllBoards>
//
// The key is "%04X%04X%08X" of the three values and is compared exactly, so
// keys written with lower-case digits never match. A missing or unreadable
// file is an empty database. The entries are indexed once, when the file is
// loaded, so naming a board does not walk the database. Not thread-safe:
// build one per thread.
class AllBoards
{
public:
    explicit AllBoards(const Common::string& path);

    // The name of the last "dev" entry (with a "name" child) carrying the
    // board's key; "Integrated PCI IDE Controller" for every board the
    // database does not name, whatever kind of board it is.
    Common::string deviceName(const unsigned short& vendor, const unsigned short& device,
                              const unsigned int& subsystem) const;

private:
    AllBoards(const AllBoards&) = delete;
    AllBoards& operator=(const AllBoards&) = delete;

    Common::shared_ptr<Common::XML::Element> m_root;
    // Points into m_root's tree, so it comes after it.
    BoardNameIndex m_names;
};

} // namespace Collection
