#pragma once

#include "common/String.h"

namespace Common
{
namespace System
{

// The machine's SMBIOS structure table, located through the entry point in
// the BIOS area and copied once by the constructor; the getters answer the
// system-summary questions from the copy.
//
// Without "/dev/mem", without the entry point, or with a table outside
// readable memory, supported() is false and every getter answers "" (the
// total RAM "0", the processor maker "unknown"). Record pointers handed out
// point into this object's copy and die with it.
class SMBios
{
public:
    SMBios();
    // Decodes a structure table already in hand (`length` bytes, walked for
    // at most `structureCount` structures) instead of reading memory: the
    // same getters over bytes from anywhere. supported() is true when the
    // copy could be made.
    SMBios(unsigned char const* table, unsigned int length, unsigned int structureCount);
    ~SMBios();
    SMBios(SMBios const&) = delete;
    SMBios& operator=(SMBios const&) = delete;

    bool supported() const { return m_supported; }

    // The first structure of `type`, or null.
    unsigned char* GetRecordByType(const unsigned char& type) const;
    // Up to `max` structures of `type` in table order; returns how many.
    unsigned int GetRecordByType(const unsigned char& type, unsigned char** records,
                                 const unsigned int& max) const;
    // String number `index` (1-based) of a record from GetRecordByType; "" for
    // 0, for an index past the record's strings and for any other pointer.
    string GetString(unsigned char* record, const unsigned int& index) const;

    string GetROMName() const;
    string GetROMDate() const;
    string GetRedundantROMDate() const;
    string GetProductName() const;
    string GetSerialNumber() const;
    string GetAssetTag() const;
    string GetSystemID() const;
    // The last four characters of the system ID; "" when it is shorter.
    string GetServerID() const;
    // Installed memory in megabytes, in decimal: the size words of the memory
    // devices that are not flash, with bit 15 (kilobyte granularity) simply
    // dropped and an unknown size (0xFFFF) counting as 32767.
    string GetTotalRAM() const;
    // The maker of the first populated central processor, else "unknown".
    string GetProcessorManufacturer() const;

private:
    string stringOfFirst(unsigned char type, unsigned int field) const;

    // Copies `length` bytes of `table` (null: reads them from physical
    // memory at `address`) with a NUL after them.
    void copyTable(unsigned char const* table, unsigned long long address, unsigned int length,
                   unsigned int structureCount);

    bool m_supported;
    unsigned char* m_table;
    unsigned int m_structureCount;
    unsigned int m_tableLength;
};

} // namespace System
} // namespace Common
