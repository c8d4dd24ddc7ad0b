#include "collection/BootControllerList.h"

#include "common/Conversion.h"
#include "common/system/EnvironmentVariable.h"

#include <cstring>

namespace Collection
{

BootControllerList::BootControllerList()
{
    std::memset(m_records, 0, sizeof m_records);
    if (!Common::EnvironmentVariable::supported())
        return;
    unsigned int size = sizeof m_records;
    if (!Common::EnvironmentVariable::read("RXHORD", m_records, size))
        std::memset(m_records, 0, sizeof m_records); // whatever a failed read left
}

unsigned char BootControllerList::rank(const unsigned char& bus, const unsigned char& device,
                                       const unsigned char& function,
                                       const unsigned int& subsystemID) const
{
    for (unsigned position = 0; position < kRecords; ++position)
    {
        const unsigned char* record = m_records + position * kRecordSize;
        const unsigned int stored =
            static_cast<unsigned int>(record[0]) | static_cast<unsigned int>(record[1]) << 8 |
            static_cast<unsigned int>(record[2]) << 16 | static_cast<unsigned int>(record[3]) << 24;
        if (record[5] == bus && (record[6] >> 3) == device && (record[6] & 7) == function &&
            Conversion::ChangeOrder<unsigned int>(stored) == subsystemID)
            return static_cast<unsigned char>(position);
    }
    return kUnranked;
}

} // namespace Collection
