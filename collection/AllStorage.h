#pragma once

#include "collection/AllBoards.h"
#include "common/List.h"
#include "common/SharedPtr.h"
#include "common/String.h"
#include "common/XMLElement.h"

namespace Collection
{

// The storage inventory document ("allstorage.xml"): the root "AllStorage"
// with one "PCIDevice" per storage controller in boot order, each with one
// "BlockDevice" per fixed disk of non-zero size behind it, found through
// sysfs. Controllers are named from the names database; without one every
// name is "".
//
// Built once by the constructor; reaches PCI, SMBIOS, the ROM and sysfs, so
// build it on one thread at a time and share neither it nor its document
// with another thread.
class AllStorage
{
public:
    explicit AllStorage(Common::shared_ptr<AllBoards> boards);

    // The document's root (shared, not copied).
    Common::shared_ptr<Common::XML::Element> toXML() const { return m_root; }
    // The document on one line, without a declaration.
    Common::string toXMLString() const;
    // Replaces the file at `path` with toXMLString(); false when it cannot be
    // created.
    bool Save(const Common::string& path) const;

    // Appends to `out` the disk entries found under `directory` (ending with
    // "/"), sorted. Two layouts are accepted: entries named "block:" + kernel
    // name (older kernels: links to the disk's folder, taken as they are),
    // and a "block" folder holding one folder per disk (current kernels;
    // appended as directory + "block/" + kernel name). Other folders are
    // searched in turn; no other symbolic link is followed, so the walk
    // cannot loop.
    static void BlockList(const Common::string& directory, Common::list<Common::string>& out);

private:
    Common::shared_ptr<AllBoards> m_boards;
    Common::shared_ptr<Common::XML::Element> m_root;
};

} // namespace Collection
