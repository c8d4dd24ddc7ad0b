#include "common/InputStreamFromFile.h"

#include "common/RegularFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Common
{

InputStreamFromFile::InputStreamFromFile(string const& path)
    : m_fd(-1), m_atEnd(false), m_begin(0), m_end(0)
{
    m_fd = openRegularFile(path, O_RDONLY);
    m_atEnd = m_fd < 0;
}

InputStreamFromFile::~InputStreamFromFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

// One read(2), retried when a signal interrupts it; 0 at the end or on error.
unsigned InputStreamFromFile::readSome(char* into, unsigned max)
{
    if (m_fd < 0 || m_atEnd)
        return 0;
    for (;;)
    {
        ssize_t got = ::read(m_fd, into, max);
        if (got > 0)
            return static_cast<unsigned>(got);
        if (got < 0 && errno == EINTR)
            continue;
        m_atEnd = true;
        return 0;
    }
}

unsigned InputStreamFromFile::readFully(char* into, unsigned max)
{
    unsigned total = 0;
    while (total < max)
    {
        unsigned got = readSome(into + total, max - total);
        if (got == 0)
            break;
        total += got;
    }
    return total;
}

bool InputStreamFromFile::refill()
{
    if (m_begin < m_end)
        return true;
    m_begin = 0;
    m_end = readSome(m_lookahead, kLookahead);
    return m_end > 0;
}

bool InputStreamFromFile::isEndOfStream()
{
    return !refill();
}

bool InputStreamFromFile::readCharacter(char& c)
{
    if (!refill())
        return false;
    c = m_lookahead[m_begin++];
    return true;
}

bool InputStreamFromFile::readLine(string& line)
{
    if (!refill())
        return false;
    string collected;
    bool ended = false;
    for (;;)
    {
        char const* start = m_lookahead + m_begin;
        char const* feed = static_cast<char const*>(std::memchr(start, '\n', m_end - m_begin));
        unsigned take = feed ? static_cast<unsigned>(feed - start) : m_end - m_begin;
        collected += string(start, take);
        m_begin += take;
        if (feed)
        {
            ++m_begin;
            ended = true;
            break;
        }
        if (!refill())
            break;
    }
    unsigned size = collected.size();
    line = (ended && size > 0 && collected[size - 1] == '\r') ? collected.substr(0, size - 1)
                                                              : collected;
    return true;
}

bool InputStreamFromFile::readBuffer(string& text)
{
    if (m_fd < 0)
        return false;
    string head(m_lookahead + m_begin, m_end - m_begin);
    m_begin = m_end = 0;

    struct stat info;
    off_t at = ::lseek(m_fd, 0, SEEK_CUR);
    bool sized = ::fstat(m_fd, &info) == 0 && at >= 0 && info.st_size > at;
    if (!sized)
        return readChunked(head, kMaxWholeFile, text);
    if (info.st_size - at > kMaxWholeFile - head.size())
        return false;

    unsigned expected = static_cast<unsigned>(info.st_size - at);
    char* bytes = nullptr;
    string whole = string::uninitialized(head.size() + expected, bytes);
    std::memcpy(bytes, head.c_str(), head.size());
    unsigned got = readFully(bytes + head.size(), expected);
    if (got < expected)
    {
        text = whole.substr(0, head.size() + got);
        m_atEnd = true;
        return true;
    }
    // The file may have grown since fstat: whatever follows is appended.
    string rest;
    if (!readChunked(string(), kMaxWholeFile - whole.size(), rest))
        return false;
    text = rest.empty() ? whole : whole + rest;
    return true;
}

// Reads to the end after `head`; false, with `text` untouched, as soon as
// the whole would pass `limit` bytes.
bool InputStreamFromFile::readChunked(string const& head, unsigned limit, string& text)
{
    unsigned used = head.size();
    if (used > limit)
        return false;
    unsigned capacity = 64 * 1024;
    while (capacity < used)
        capacity *= 2;
    char* chunk = new char[capacity];
    std::memcpy(chunk, head.c_str(), used);
    bool withinLimit = true;
    try
    {
        for (;;)
        {
            if (used == capacity)
            {
                char* larger = new char[capacity * 2];
                std::memcpy(larger, chunk, used);
                delete[] chunk;
                chunk = larger;
                capacity *= 2;
            }
            unsigned got = readSome(chunk + used, capacity - used);
            if (got == 0)
                break;
            used += got;
            if (used > limit)
            {
                withinLimit = false;
                break;
            }
        }
        if (withinLimit)
            text = string(chunk, used);
    }
    catch (...)
    {
        delete[] chunk;
        throw;
    }
    delete[] chunk;
    return withinLimit;
}

} // namespace Common
