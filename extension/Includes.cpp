#include "extension/Includes.h"

#include <cstring>
#include <string.h>

namespace
{
const char kOpen[] = "<?include ";
const unsigned kOpenLength = sizeof kOpen - 1; // 10
const char kClose[] = "?>";
const unsigned kCloseLength = sizeof kClose - 1;
const unsigned kLookBack = kOpenLength - 1; // 9

unsigned find(const char* text, unsigned from, unsigned to, const char* needle, unsigned length)
{
    if (to < from || to - from < length)
        return Common::string::npos;
    const void* at = ::memmem(text + from, to - from, needle, length);
    return at ? static_cast<unsigned>(static_cast<const char*>(at) - text) : Common::string::npos;
}

// An append-only byte buffer whose end can also be taken back.
class Output
{
public:
    explicit Output(unsigned capacity)
        : m_bytes(new char[capacity ? capacity : 1]), m_size(0), m_capacity(capacity ? capacity : 1)
    {
    }
    ~Output() { delete[] m_bytes; }
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void append(const char* bytes, unsigned length)
    {
        if (length > m_capacity - m_size)
        {
            unsigned capacity = m_capacity;
            while (length > capacity - m_size)
                capacity = capacity > 0x7FFFFFFFu ? 0xFFFFFFFFu : capacity * 2;
            char* larger = new char[capacity];
            std::memcpy(larger, m_bytes, m_size);
            delete[] m_bytes;
            m_bytes = larger;
            m_capacity = capacity;
        }
        std::memcpy(m_bytes + m_size, bytes, length);
        m_size += length;
    }
    void truncate(unsigned size) { m_size = size; }
    const char* bytes() const { return m_bytes; }
    unsigned size() const { return m_size; }

private:
    char* m_bytes;
    unsigned m_size;
    unsigned m_capacity;
};

// The unsearched rest of the page: bytes [begin, capacity) of a buffer, so
// that text can be put in front of it in place while there is room.
class Rest
{
public:
    explicit Rest(const Common::string& text)
        : m_bytes(new char[text.size() ? text.size() : 1]), m_begin(0), m_capacity(text.size())
    {
        std::memcpy(m_bytes, text.c_str(), text.size());
    }
    ~Rest() { delete[] m_bytes; }
    Rest(const Rest&) = delete;
    Rest& operator=(const Rest&) = delete;

    const char* bytes() const { return m_bytes; }
    unsigned begin() const { return m_begin; }
    unsigned end() const { return m_capacity; }
    unsigned size() const { return m_capacity - m_begin; }

    // The rest becomes `keep` + `content` + the bytes from `from` on.
    void Replace(unsigned from, const char* keep, unsigned keepLength,
                 const Common::string& content)
    {
        const unsigned tail = m_capacity - from;
        const unsigned front = keepLength + content.size();
        if (front <= from)
        {
            m_begin = from - front;
            std::memcpy(m_bytes + m_begin + keepLength, content.c_str(), content.size());
            std::memcpy(m_bytes + m_begin, keep, keepLength);
            return;
        }
        // Room for the new front and as much again, so that growing costs
        // no more than the text put in front.
        const unsigned room = front + (front + tail > 0x3FFFFFFFu ? 0 : front + tail);
        const unsigned capacity = room + tail;
        char* bytes = new char[capacity];
        std::memcpy(bytes + room, m_bytes + from, tail);
        std::memcpy(bytes + room - content.size(), content.c_str(), content.size());
        std::memcpy(bytes + room - front, keep, keepLength);
        delete[] m_bytes;
        m_bytes = bytes;
        m_capacity = capacity;
        m_begin = room - front;
    }

private:
    char* m_bytes;
    unsigned m_begin;
    unsigned m_capacity;
};
} // namespace

Includes::Result Includes::expand(const Common::string& page, const Common::string& pageFolder,
                                  const Common::string& contentFolder, Reader& reader)
{
    Result result;
    result.expansions = 0;
    result.limited = false;
    if (find(page.c_str(), 0, page.size(), kOpen, kOpenLength) == Common::string::npos)
    {
        result.text = page; // shared, not copied
        return result;
    }

    Output done(page.size());
    Rest rest(page);
    for (;;)
    {
        const char* bytes = rest.bytes();
        const unsigned start = find(bytes, rest.begin(), rest.end(), kOpen, kOpenLength);
        if (start == Common::string::npos)
            break;
        const unsigned close = find(bytes, start, rest.end(), kClose, kCloseLength);
        if (close == Common::string::npos)
            break;

        const unsigned nameAt = start + kOpenLength;
        const Common::string name(bytes + nameAt, close - nameAt);
        Common::string content;
        bool opened = false;
        if (!name.empty())
            opened =
                reader.read(name[0] == '/' ? contentFolder + name : pageFolder + name, content);
        if (opened)
        {
            const unsigned after = close + kCloseLength;
            const unsigned long long size = static_cast<unsigned long long>(done.size()) +
                                            rest.size() - (after - start) + content.size();
            if (result.expansions == kMaxExpansions || size > kMaxPageBytes)
            {
                result.limited = true;
                break;
            }
            ++result.expansions;
        }

        // The last (up to) 9 characters before the directive are searched
        // again; everything before them is final.
        char keep[kLookBack];
        unsigned fromRest = start - rest.begin();
        unsigned keepLength;
        if (fromRest >= kLookBack)
        {
            keepLength = kLookBack;
            done.append(bytes + rest.begin(), fromRest - kLookBack);
            std::memcpy(keep, bytes + start - kLookBack, kLookBack);
        }
        else
        {
            unsigned fromDone = kLookBack - fromRest;
            if (fromDone > done.size())
                fromDone = done.size();
            keepLength = fromDone + fromRest;
            std::memcpy(keep, done.bytes() + done.size() - fromDone, fromDone);
            std::memcpy(keep + fromDone, bytes + rest.begin(), fromRest);
            done.truncate(done.size() - fromDone);
        }
        rest.Replace(close + kCloseLength, keep, keepLength, content);
    }

    char* out = nullptr;
    result.text = Common::string::uninitialized(done.size() + rest.size(), out);
    std::memcpy(out, done.bytes(), done.size());
    std::memcpy(out + done.size(), rest.bytes() + rest.begin(), rest.size());
    return result;
}
