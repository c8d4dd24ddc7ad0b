#include "common/OutputStreamToBuffer.h"

#include <cstring>

namespace Common
{

OutputStreamToBuffer::OutputStreamToBuffer(unsigned size)
    : m_bytes(new char[size ? size : 1]), m_used(0), m_capacity(size ? size : 1)
{
}

OutputStreamToBuffer::~OutputStreamToBuffer()
{
    delete[] m_bytes;
}

bool OutputStreamToBuffer::Accept(char const* bytes, unsigned length)
{
    if (length == 0)
        return true;
    if (length > 0xFFFFFFFFu - m_used)
        return false;
    if (m_used + length > m_capacity)
    {
        unsigned capacity = m_capacity;
        while (capacity < m_used + length)
            capacity = capacity > 0x7FFFFFFFu ? m_used + length : capacity * 2;
        char* larger = new char[capacity];
        std::memcpy(larger, m_bytes, m_used);
        delete[] m_bytes;
        m_bytes = larger;
        m_capacity = capacity;
    }
    std::memcpy(m_bytes + m_used, bytes, length);
    m_used += length;
    return true;
}

} // namespace Common
