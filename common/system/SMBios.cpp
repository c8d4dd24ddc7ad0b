#include "common/system/SMBios.h"

#include "common/Conversion.h"
#include "common/system/Memory.h"
#include "common/system/SMBiosEntryPoint.h"
#include "common/system/SMBiosTable.h"

#include <cstring>
#include <new>

namespace Common
{
namespace System
{

namespace
{
const unsigned long long kSearchStart = 0xF0000;
const unsigned int kSearchLength = 0x10000;
const unsigned int kMaxRecords = 256;

const unsigned char kTypeBios = 0;
const unsigned char kTypeSystem = 1;
const unsigned char kTypeChassis = 3;
const unsigned char kTypeProcessor = 4;
const unsigned char kTypeMemoryDevice = 17;
const unsigned char kTypeRedundantRom = 193;
const unsigned char kTypeSystemId = 195;

const unsigned char kCentralProcessor = 3;
const unsigned char kSocketPopulated = 0x40;
const unsigned char kMemoryTypeFlash = 9;
} // namespace

SMBios::SMBios() : m_supported(false), m_table(nullptr), m_structureCount(0), m_tableLength(0)
{
    unsigned char* scratch = new (std::nothrow) unsigned char[kSearchLength];
    SMBiosEntryPoint entry;
    if (scratch != nullptr && Memory::Read(kSearchStart, scratch, kSearchLength) &&
        SMBiosEntryPoint::Find(scratch, kSearchLength, entry))
        copyTable(nullptr, entry.tableAddress, entry.tableLength, entry.structureCount);
    delete[] scratch;
}

SMBios::SMBios(unsigned char const* table, unsigned int length, unsigned int structureCount)
    : m_supported(false), m_table(nullptr), m_structureCount(0), m_tableLength(0)
{
    if (table != nullptr && length < 0x10000)
        copyTable(table, 0, length, structureCount);
}

void SMBios::copyTable(unsigned char const* table, unsigned long long address,
                       unsigned int length, unsigned int structureCount)
{
    m_table = new (std::nothrow) unsigned char[length + 1u];
    if (m_table == nullptr)
        return;
    std::memset(m_table, 0, length + 1u);
    if (table != nullptr)
        std::memcpy(m_table, table, length);
    m_supported = table != nullptr || Memory::Read(address, m_table, length);
    if (m_supported)
    {
        m_tableLength = length;
        m_structureCount = structureCount;
    }
}

SMBios::~SMBios()
{
    delete[] m_table;
}

unsigned char* SMBios::GetRecordByType(const unsigned char& type) const
{
    unsigned char* record = nullptr;
    return GetRecordByType(type, &record, 1) == 1 ? record : nullptr;
}

unsigned int SMBios::GetRecordByType(const unsigned char& type, unsigned char** records,
                                     const unsigned int& max) const
{
    unsigned int found = 0;
    if (records == nullptr || max == 0)
        return 0;
    SMBiosTable(m_table, m_tableLength, m_structureCount)
        .forEachOf(type,
                   [&](unsigned int offset)
                   {
                       records[found++] = m_table + offset;
                       return found < max;
                   });
    return found;
}

string SMBios::GetString(unsigned char* record, const unsigned int& index) const
{
    // Compared as numbers: the pointer may come from anywhere.
    unsigned long at = reinterpret_cast<unsigned long>(record);
    unsigned long begin = reinterpret_cast<unsigned long>(m_table);
    if (m_table == nullptr || at < begin || at - begin >= m_tableLength)
        return string();
    return SMBiosTable(m_table, m_tableLength, m_structureCount)
        .text(static_cast<unsigned int>(at - begin), index);
}

string SMBios::stringOfFirst(unsigned char type, unsigned int field) const
{
    SMBiosTable table(m_table, m_tableLength, m_structureCount);
    unsigned int record = table.first(type);
    return record == SMBiosTable::npos ? string() : table.textAt(record, field);
}

string SMBios::GetROMName() const
{
    return stringOfFirst(kTypeBios, 0x05);
}

string SMBios::GetROMDate() const
{
    return stringOfFirst(kTypeBios, 0x08);
}

string SMBios::GetRedundantROMDate() const
{
    return stringOfFirst(kTypeRedundantRom, 0x05);
}

string SMBios::GetProductName() const
{
    return stringOfFirst(kTypeSystem, 0x05);
}

string SMBios::GetSerialNumber() const
{
    return stringOfFirst(kTypeSystem, 0x07);
}

string SMBios::GetAssetTag() const
{
    return stringOfFirst(kTypeChassis, 0x08);
}

string SMBios::GetSystemID() const
{
    return stringOfFirst(kTypeSystemId, 0x04);
}

string SMBios::GetServerID() const
{
    string id = GetSystemID();
    return id.size() < 4 ? string() : id.substr(id.size() - 4);
}

string SMBios::GetTotalRAM() const
{
    SMBiosTable table(m_table, m_tableLength, m_structureCount);
    unsigned long long megabytes = 0;
    unsigned int counted = 0;
    table.forEachOf(kTypeMemoryDevice,
                    [&](unsigned int device)
                    {
                        unsigned char memoryType;
                        unsigned short size;
                        if (table.byteAt(device, 0x12, memoryType) &&
                            memoryType != kMemoryTypeFlash && table.wordAt(device, 0x0C, size))
                            megabytes += size & 0x7FFF;
                        return ++counted < kMaxRecords;
                    });
    return Conversion::toString(megabytes);
}

string SMBios::GetProcessorManufacturer() const
{
    SMBiosTable table(m_table, m_tableLength, m_structureCount);
    string maker("unknown");
    unsigned int counted = 0;
    table.forEachOf(kTypeProcessor,
                    [&](unsigned int processor)
                    {
                        unsigned char kind;
                        unsigned char status;
                        if (table.byteAt(processor, 0x05, kind) && kind == kCentralProcessor &&
                            table.byteAt(processor, 0x18, status) &&
                            (status & kSocketPopulated) != 0)
                        {
                            maker = table.textAt(processor, 0x07);
                            return false;
                        }
                        return ++counted < kMaxRecords;
                    });
    return maker;
}

} // namespace System
} // namespace Common
