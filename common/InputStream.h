#pragma once

#include "common/GlobalStaticAllocator.h"
#include "common/String.h"

namespace Common
{

// A source of bytes read a character, a line or the whole rest at a time.
// Stream objects are allocated from the memory pool (the class-level
// operator new of GlobalStaticAllocator) and held in Common::shared_ptr.
class InputStream : public GlobalStaticAllocator
{
public:
    virtual ~InputStream() {}

    virtual bool isOpen() const = 0;
    // True when no byte is left (also for a stream that did not open).
    virtual bool isEndOfStream() = 0;

    // The next byte; false at the end.
    virtual bool readCharacter(char& c) = 0;
    // The bytes up to the next line feed, without the line feed and without a
    // carriage return just before it; false when nothing was left to read.
    virtual bool readLine(string& line) = 0;
    // Everything that is left, in one string; false when the stream is not
    // open. The stream is at its end afterwards.
    virtual bool readBuffer(string& text) = 0;

    // Same as readBuffer.
    InputStream& operator>>(string& text)
    {
        readBuffer(text);
        return *this;
    }
};

} // namespace Common
