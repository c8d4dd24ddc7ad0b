#pragma once

#include "common/InputStream.h"

namespace Common
{

// Reads from a string held by the stream (shared, not copied).
class InputStreamFromBuffer : public InputStream
{
public:
    explicit InputStreamFromBuffer(string const& text) : m_text(text), m_position(0) {}

    bool isOpen() const override { return true; }
    bool isEndOfStream() override { return m_position >= m_text.size(); }
    bool readCharacter(char& c) override;
    bool readLine(string& line) override;
    bool readBuffer(string& text) override;

private:
    string m_text;
    unsigned m_position;
};

} // namespace Common
