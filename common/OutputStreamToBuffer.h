#pragma once

#include "common/OutputStream.h"

namespace Common
{

// Collects text in memory; text() gives what was written so far. `size` is
// the initial capacity in bytes; the buffer grows as needed.
class OutputStreamToBuffer : public OutputStream
{
public:
    explicit OutputStreamToBuffer(unsigned size);
    ~OutputStreamToBuffer() override;
    OutputStreamToBuffer(OutputStreamToBuffer const&) = delete;
    OutputStreamToBuffer& operator=(OutputStreamToBuffer const&) = delete;

    bool isOpen() const override { return true; }
    bool Accept(char const* bytes, unsigned length) override;
    string text() const { return string(m_bytes, m_used); }

private:
    char* m_bytes;
    unsigned m_used;
    unsigned m_capacity;
};

} // namespace Common
