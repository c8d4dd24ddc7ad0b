#include "collection/ManagementExchange.h"

#include "common/system/IPMI.h"

namespace Collection
{

ManagementExchange::ManagementExchange(unsigned char netfn, unsigned char cmd,
                                       const unsigned char* data, unsigned char length)
    : m_reply(), m_length(0)
{
    const unsigned char capacity = kCapacity;
    unsigned char received = 0;
    if (Common::IPMI().execute(netfn, cmd, data, length, m_reply, capacity, received))
        m_length = received;
}

} // namespace Collection
