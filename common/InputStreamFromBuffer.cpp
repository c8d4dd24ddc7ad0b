#include "common/InputStreamFromBuffer.h"

namespace Common
{

bool InputStreamFromBuffer::readCharacter(char& c)
{
    if (isEndOfStream())
        return false;
    c = m_text[m_position++];
    return true;
}

bool InputStreamFromBuffer::readLine(string& line)
{
    if (isEndOfStream())
        return false;
    unsigned end = m_text.find('\n', m_position);
    unsigned next = end == string::npos ? m_text.size() : end + 1;
    if (end == string::npos)
        end = m_text.size();
    if (end > m_position && m_text[end - 1] == '\r' && next != end)
        --end;
    line = string(m_text.c_str() + m_position, end - m_position);
    m_position = next;
    return true;
}

bool InputStreamFromBuffer::readBuffer(string& text)
{
    if (m_position == 0)
        text = m_text;
    else
        text = string(m_text.c_str() + m_position, m_text.size() - m_position);
    m_position = m_text.size();
    return true;
}

} // namespace Common
