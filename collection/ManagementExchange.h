#pragma once

namespace Collection
{

// One request to the management controller, sent when the object is built,
// and its reply. Every byte is read through operator[], which answers 0 past
// the end of the reply: a short reply never leads to reading stale memory,
// but check succeeded(length) before trusting what it holds.
class ManagementExchange
{
public:
    // Sends `length` bytes of `data` as `netfn`/`cmd` through the IPMI
    // device (the 5-second reply limit applies).
    ManagementExchange(unsigned char netfn, unsigned char cmd, const unsigned char* data,
                       unsigned char length);

    // A reply with at least its completion code arrived in time.
    bool answered() const { return m_length > 0; }
    // The reply's completion code; 0xFF when nothing was answered.
    unsigned char completionCode() const { return answered() ? m_reply[0] : 0xFF; }
    // Completion code 0 and at least `length` bytes, the completion code
    // included.
    bool succeeded(unsigned int length) const
    {
        return answered() && m_reply[0] == 0 && m_length >= length;
    }
    // Byte `index` of the reply (the completion code is byte 0); 0 at or
    // beyond the reply's end.
    unsigned char operator[](unsigned int index) const
    {
        return index < m_length ? m_reply[index] : 0;
    }

private:
    static const unsigned int kCapacity = 64;
    unsigned char m_reply[kCapacity];
    unsigned char m_length;
};

} // namespace Collection
