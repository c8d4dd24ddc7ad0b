#pragma once

#include "common/String.h"

namespace Common
{
namespace System
{

// Decodes an SMBIOS structure table held in a buffer (never reads memory
// itself). Every structure is checked to lie inside the buffer before any of
// its bytes is read: a structure whose header, formatted area or string set
// runs past the end, or whose formatted area is shorter than its 4-byte
// header, ends the walk. Structures are named by their offset in the buffer.
class SMBiosTable
{
public:
    static constexpr unsigned int npos = 0xFFFFFFFFu;

    // `structureCount` is the entry point's count: the walk visits at most
    // that many structures.
    SMBiosTable(unsigned char const* table, unsigned int length, unsigned int structureCount);

    // Offset of the first structure of `type`, or npos.
    unsigned int first(unsigned char type) const;
    // Calls visit(offset) for the structures of `type` in table order while
    // it returns true.
    template <class Visitor> void forEachOf(unsigned char type, Visitor visit) const
    {
        unsigned int offset = 0;
        for (unsigned int visited = 0; visited < m_structureCount; ++visited)
        {
            unsigned int size = structureSize(offset);
            if (size == 0)
                return;
            if (m_table[offset] == type && !visit(offset))
                return;
            offset += size;
        }
    }

    // Whether `offset` is where a whole structure starts.
    bool isStructure(unsigned int offset) const;
    // A byte or little-endian word of the formatted area of the structure at
    // `offset`; false when the field lies beyond the formatted area.
    bool byteAt(unsigned int structure, unsigned int field, unsigned char& value) const;
    bool wordAt(unsigned int structure, unsigned int field, unsigned short& value) const;
    // String number `index` (1-based) of the structure; "" for 0, for an
    // index past its string set and for a structure that is not whole.
    string text(unsigned int structure, unsigned int index) const;
    // The string whose number is the byte at `field` of the structure.
    string textAt(unsigned int structure, unsigned int field) const;

private:
    // Size of the whole structure at `offset` (formatted area, strings and
    // the closing pair of zeros), 0 when it does not fit.
    unsigned int structureSize(unsigned int offset) const;

    unsigned char const* m_table;
    unsigned int m_length;
    unsigned int m_structureCount;
};

} // namespace System
} // namespace Common
