#pragma once

#include "common/InputStream.h"

namespace Common
{

// Reads a regular file through its descriptor; a path naming anything else (a
// folder, a FIFO, a device) does not open (see RegularFile.h). readBuffer
// reads the rest of the file with one read into the string's own buffer (no
// per-character appends: files of many megabytes are read this way); files
// whose size the kernel does not report (/proc, /sys) are read in growing
// chunks and copied once. readBuffer refuses, reading nothing, a rest longer
// than kMaxWholeFile: more than any page or names database, and a bound on
// what one request can make the host hold.
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

    static const unsigned kMaxWholeFile = 64u << 20;

private:
    static const unsigned kLookahead = 4096;

    bool refill();
    unsigned readSome(char* into, unsigned max);
    unsigned readFully(char* into, unsigned max);
    bool readChunked(string const& head, unsigned limit, string& text);

    int m_fd;
    bool m_atEnd;
    unsigned m_begin;
    unsigned m_end;
    char m_lookahead[kLookahead];
};

} // namespace Common
