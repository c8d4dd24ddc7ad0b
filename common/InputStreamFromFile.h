#pragma once

#include "common/InputStream.h"

namespace Common
{

// Reads a file through its descriptor. readBuffer reads the rest of a regular
// file with one read into the string's own buffer (no per-character appends:
// files of many megabytes are read this way); files whose size the kernel does
// not report (/proc, /sys) are read in growing chunks and copied once.
class InputStreamFromFile : public InputStream
{
public:
    explicit InputStreamFromFile(string const& path);
    ~InputStreamFromFile() override;
    InputStreamFromFile(InputStreamFromFile const&) = delete;
    InputStreamFromFile& operator=(InputStreamFromFile const&) = delete;

    bool isOpen() const override { return m_fd >= 0; }
    bool isEndOfStream() override;
    bool readCharacter(char& c) override;
    bool readLine(string& line) override;
    bool readBuffer(string& text) override;

private:
    static const unsigned kLookahead = 4096;

    bool refill();
    unsigned readSome(char* into, unsigned max);
    unsigned readFully(char* into, unsigned max);
    bool readChunked(string const& head, string& text);

    int m_fd;
    bool m_atEnd;
    unsigned m_begin;
    unsigned m_end;
    char m_lookahead[kLookahead];
};

} // namespace Common
