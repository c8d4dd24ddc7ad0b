#pragma once

#include "common/String.h"

// Collects the text a page writes and hands it to the entry point's page
// buffer on Flush.
class NSPResponse
{
public:
    // `target` (not owned) is the string that Flush appends to.
    explicit NSPResponse(Common::string* target) : m_target(target) {}

    void Write(const char* text);
    void Write(const Common::string& text);
    // The text with every blank replaced by "+"; nothing else is changed.
    static Common::string htmlEncode(const Common::string& text);
    void Clear() { m_buffer.clear(); }
    // Appends the buffer to the target, then clears the buffer.
    void Flush();

    const Common::string& buffer() const { return m_buffer; }

private:
    Common::string* m_target;
    Common::string m_buffer;
};
