#pragma once

#include "common/IString.h"
#include "common/Map.h"

namespace Collection
{

// The ROM's initial-program-load (IPL) table: the boot devices the firmware
// knows, in its own order, read from the copy of the system BIOS segment
// (physical 0xF0000..0xFFFFF). The table follows the signature "$IPL" and
// holds up to 16 entries of 16 bytes; a type word of 0 ends it.
//
// Each construction reads physical memory again; a machine whose memory
// cannot be read, or whose ROM has no table, gives an empty table.
class IPLTable
{
public:
    struct _IPL_TABLE_ENTRY
    {
        unsigned short type;
        unsigned char bus;
        unsigned char device;
        // Only bits 17..16 of the entry's location word: functions 4..7
        // read as 0..3, as the firmware's own tools read them.
        unsigned char function;
        // The type's name ("hd", "cdrom", ...; empty for a type the names
        // table lacks), looked up by the type's low byte.
        Common::istring name;
        // The ROM's text for the device.
        Common::istring description;
    };

    static const unsigned int kMaximumEntries = 16;
    // The BIOS segment's size: it is read from physical 0xF0000.
    static const unsigned int kSegmentSize = 0x10000;

    IPLTable();
    // Decodes a copy of the BIOS segment (kSegmentSize bytes) instead of
    // reading memory.
    explicit IPLTable(const unsigned char* segment);
    virtual ~IPLTable();

    // Entries are numbered 0..count()-1 in ROM order.
    unsigned int count() const { return m_entries.size(); }
    // The entry at `index`; an index at or beyond count() gives an entry of
    // type 0 with empty texts.
    const _IPL_TABLE_ENTRY& operator[](unsigned int index) const;

private:
    void decode(const unsigned char* segment);

    Common::map<unsigned int, _IPL_TABLE_ENTRY> m_entries;
};

} // namespace Collection
