#include "extension/NSPResponse.h"

void NSPResponse::Write(const char* text)
{
    if (text)
        m_buffer += text;
}

void NSPResponse::Write(const Common::string& text)
{
    m_buffer += text;
}

Common::string NSPResponse::htmlEncode(const Common::string& text)
{
    return Common::Replace(text, " ", "+");
}

void NSPResponse::Flush()
{
    if (!m_buffer.empty() && m_target)
        *m_target += m_buffer;
    Clear();
}
