#pragma once

#include "common/XMLElement.h"

namespace Collection
{

// The "name" elements of a names database's "PCI" element by board key, so
// that naming a board costs the same whatever the size of the database.
// Built with one walk over the entries; a look-up then reads a bucket or
// two of a hash table instead of every entry.
//
// Holds plain pointers into the database's tree: keep the tree alive and
// unchanged for as long as the index is used. Not copyable.
class BoardNameIndex
{
public:
    // Indexes the "dev" children of `pci` that have an "id" of sixteen
    // upper-case hexadecimal digits and a "name" child. Where an "id"
    // repeats, the later entry replaces the earlier one: the last one wins.
    explicit BoardNameIndex(const Common::XML::Element& pci);
    ~BoardNameIndex();

    // The first "name" child of the entry whose "id" is "%04X%04X%08X" of
    // the three values, or null when no entry names the board.
    const Common::XML::Element* find(unsigned short vendor, unsigned short device,
                                     unsigned int subsystem) const;

private:
    BoardNameIndex(const BoardNameIndex&) = delete;
    BoardNameIndex& operator=(const BoardNameIndex&) = delete;

    // An empty bucket has no name.
    struct Bucket
    {
        unsigned long long key;
        const Common::XML::Element* name;
    };

    // The bucket that holds `key`, or the empty one where it would go.
    Bucket& bucketOf(unsigned long long key) const;

    Bucket* m_buckets; // null when nothing is indexed
    unsigned m_mask;   // bucket count - 1; the count is a power of two
};

} // namespace Collection
