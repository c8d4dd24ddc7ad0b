#include "common/system/SMBiosTable.h"

namespace Common
{
namespace System
{

namespace
{
const unsigned int kHeaderLength = 4;
} // namespace

SMBiosTable::SMBiosTable(unsigned char const* table, unsigned int length,
                         unsigned int structureCount)
    : m_table(table), m_length(table == nullptr ? 0 : length), m_structureCount(structureCount)
{
}

unsigned int SMBiosTable::first(unsigned char type) const
{
    unsigned int found = npos;
    forEachOf(type,
              [&](unsigned int offset)
              {
                  found = offset;
                  return false;
              });
    return found;
}

bool SMBiosTable::isStructure(unsigned int offset) const
{
    return structureSize(offset) != 0;
}

bool SMBiosTable::byteAt(unsigned int structure, unsigned int field, unsigned char& value) const
{
    if (!isStructure(structure) || field >= m_table[structure + 1])
        return false;
    value = m_table[structure + field];
    return true;
}

bool SMBiosTable::wordAt(unsigned int structure, unsigned int field, unsigned short& value) const
{
    unsigned char low;
    unsigned char high;
    if (!byteAt(structure, field, low) || !byteAt(structure, field + 1, high))
        return false;
    value = static_cast<unsigned short>(high << 8 | low);
    return true;
}

string SMBiosTable::text(unsigned int structure, unsigned int index) const
{
    if (index == 0 || !isStructure(structure))
        return string();
    // The string set lies inside the table: structureSize found its end.
    unsigned int at = structure + m_table[structure + 1];
    for (unsigned int skipped = 1; skipped < index; ++skipped)
    {
        if (m_table[at] == 0)
            return string();
        while (m_table[at] != 0)
            ++at;
        ++at;
    }
    unsigned int end = at;
    while (m_table[end] != 0)
        ++end;
    return string(reinterpret_cast<char const*>(m_table + at), end - at);
}

string SMBiosTable::textAt(unsigned int structure, unsigned int field) const
{
    unsigned char index;
    return byteAt(structure, field, index) ? text(structure, index) : string();
}

unsigned int SMBiosTable::structureSize(unsigned int offset) const
{
    if (offset >= m_length || m_length - offset < kHeaderLength)
        return 0;
    unsigned int formatted = m_table[offset + 1];
    if (formatted < kHeaderLength || formatted > m_length - offset)
        return 0;
    for (unsigned int at = offset + formatted; at + 1 < m_length; ++at)
        if (m_table[at] == 0 && m_table[at + 1] == 0)
            return at + 2 - offset;
    return 0;
}

} // namespace System
} // namespace Common
