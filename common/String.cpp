#include "common/String.h"

#include "common/List.h"
#include "common/TextSearch.h"

#include <cstring>

namespace Common
{
namespace
{
char const* orEmpty(char const* s)
{
    return s ? s : "";
}

unsigned lengthOf(char const* s)
{
    return static_cast<unsigned>(std::strlen(orEmpty(s)));
}

unsigned clampPosition(unsigned pos, unsigned size)
{
    return pos > size ? size : pos;
}

// A count starting at `pos` that does not run past the end.
unsigned clampCount(unsigned pos, unsigned n, unsigned size)
{
    return n > size - pos ? size - pos : n;
}
} // namespace

char* string::allocateBuffer(unsigned n, unsigned*& length)
{
    char* buffer = new char[n + 1];
    try
    {
        length = new unsigned(n + 1);
    }
    catch (...)
    {
        delete[] buffer;
        throw;
    }
    buffer[n] = '\0';
    return buffer;
}

string::string() : m_length(nullptr), m_references(nullptr), m_buffer(nullptr)
{
    assign("", 0);
}

string::string(string const& other)
    : m_length(other.m_length), m_references(other.m_references), m_buffer(other.m_buffer)
{
    ++*m_references;
}

string::string(char const* s, unsigned n)
    : m_length(nullptr), m_references(nullptr), m_buffer(nullptr)
{
    assign(s, n);
}

string::string(char const* s, unsigned offset, unsigned count)
    : m_length(nullptr), m_references(nullptr), m_buffer(nullptr)
{
    assign(s ? s + offset : s, count);
}

string::string(char c) : m_length(nullptr), m_references(nullptr), m_buffer(nullptr)
{
    assign(&c, 1);
}

string::~string()
{
    release();
}

void string::release()
{
    if (m_references && --*m_references == 0)
    {
        delete m_length;
        delete m_references;
        delete[] m_buffer;
    }
}

// Gives up this string's share of its buffer and leaves it with a count of
// one for the buffer about to be installed.
void string::detach()
{
    if (m_references == nullptr)
    {
        m_references = new unsigned(1);
        return;
    }
    if (--*m_references != 0)
    {
        m_references = new unsigned(1);
        return;
    }
    delete m_length;
    delete[] m_buffer;
    *m_references = 1;
}

// The new blocks are built before the old ones are released, so `s` may
// point into this string's own buffer.
void string::install(unsigned* length, char* buffer)
{
    try
    {
        detach();
    }
    catch (...)
    {
        delete length;
        delete[] buffer;
        throw;
    }
    m_length = length;
    m_buffer = buffer;
}

string& string::assign(char const* s, unsigned n)
{
    s = orEmpty(s);
    if (n == npos)
        n = lengthOf(s);
    unsigned* length = nullptr;
    char* buffer = allocateBuffer(n, length);
    std::memcpy(buffer, s, n);
    install(length, buffer);
    return *this;
}

string& string::assign(string const& other)
{
    if (other.m_references == m_references)
        return *this;
    ++*other.m_references;
    release();
    m_length = other.m_length;
    m_references = other.m_references;
    m_buffer = other.m_buffer;
    return *this;
}

string& string::operator=(string const& other)
{
    return assign(other);
}
string& string::operator=(char const* s)
{
    return assign(s, npos);
}
string& string::operator=(char c)
{
    return assign(&c, 1);
}
void string::clear()
{
    assign("", 0);
}

string string::uninitialized(unsigned n, char*& bytes)
{
    string result;
    unsigned* length = nullptr;
    bytes = allocateBuffer(n, length);
    result.install(length, bytes);
    return result;
}

string& string::operator+=(string const& other)
{
    unsigned mine = size();
    unsigned theirs = other.size();
    unsigned* length = nullptr;
    char* buffer = allocateBuffer(mine + theirs, length);
    std::memcpy(buffer, m_buffer, mine);
    std::memcpy(buffer + mine, other.m_buffer, theirs);
    install(length, buffer);
    return *this;
}

string& string::operator+=(char const* s)
{
    return *this += string(s);
}

string& string::replace(unsigned pos, unsigned n, string const& s)
{
    unsigned total = size();
    pos = clampPosition(pos, total);
    n = clampCount(pos, n, total);
    unsigned inserted = s.size();
    unsigned* length = nullptr;
    char* buffer = allocateBuffer(total - n + inserted, length);
    std::memcpy(buffer, m_buffer, pos);
    std::memcpy(buffer + pos, s.m_buffer, inserted);
    std::memcpy(buffer + pos + inserted, m_buffer + pos + n, total - pos - n);
    install(length, buffer);
    return *this;
}

string& string::replace(unsigned pos, unsigned n, char const* s)
{
    return replace(pos, n, string(s));
}

unsigned string::find(char const* s, unsigned pos, unsigned n) const
{
    return TextSearch::forward(m_buffer, size(), orEmpty(s), pos, n, false);
}
unsigned string::find(char const* s, unsigned pos) const
{
    return find(s, pos, lengthOf(s));
}
unsigned string::find(string const& s, unsigned pos) const
{
    return find(s.m_buffer, pos, s.size());
}
unsigned string::find(char c, unsigned pos) const
{
    return find(&c, pos, 1);
}

unsigned string::rfind(char const* s, unsigned pos, unsigned n) const
{
    return TextSearch::backward(m_buffer, size(), orEmpty(s), pos, n, false, 0);
}
unsigned string::rfind(char const* s, unsigned pos) const
{
    return rfind(s, pos, lengthOf(s));
}
unsigned string::rfind(string const& s, unsigned pos) const
{
    return rfind(s.m_buffer, pos, s.size());
}
unsigned string::rfind(char c, unsigned pos) const
{
    return rfind(&c, pos, 1);
}

// npos takes the text up to its first NUL; any other count is clamped to the
// end of the buffer.
string string::substr(unsigned pos, unsigned n) const
{
    unsigned total = size();
    pos = clampPosition(pos, total);
    if (n == npos)
        return string(m_buffer + pos);
    return string(m_buffer + pos, clampCount(pos, n, total));
}

list<string, DefaultAllocator> string::split(string const& sep) const
{
    list<string, DefaultAllocator> fields;
    unsigned start = 0;
    while (start != npos)
    {
        unsigned at = find(sep, start);
        if (at == npos)
        {
            fields.push_back(substr(start, npos));
            start = npos;
        }
        else
        {
            fields.push_back(substr(start, at - start));
            start = at + sep.size();
        }
    }
    return fields;
}

bool string::operator==(string const& other) const
{
    return size() == other.size() && std::memcmp(m_buffer, other.m_buffer, size()) == 0;
}

bool string::operator==(char const* s) const
{
    unsigned n = lengthOf(s);
    return size() == n && std::strncmp(m_buffer, orEmpty(s), n) == 0;
}

bool string::operator<(string const& other) const
{
    return std::strcmp(m_buffer, other.m_buffer) < 0;
}
bool string::operator<(char const* s) const
{
    return std::strcmp(m_buffer, orEmpty(s)) < 0;
}

char const& string::operator[](unsigned i) const
{
    return m_buffer[clampPosition(i, size())];
}

string operator+(string const& a, string const& b)
{
    string result(a);
    result += b;
    return result;
}

string operator+(char const* a, string const& b)
{
    string result(a);
    result += b;
    return result;
}

string operator+(string const& a, char const* b)
{
    string result(a);
    result += b;
    return result;
}

string Replace(string const& text, string const& what, string const& with)
{
    if (what.empty())
        return text;
    unsigned count = 0;
    for (unsigned at = text.find(what); at != string::npos; at = text.find(what, at + what.size()))
        ++count;
    if (count == 0)
        return text;

    char* out = nullptr;
    string result =
        string::uninitialized(text.size() - count * what.size() + count * with.size(), out);
    unsigned from = 0;
    for (unsigned at = text.find(what); at != string::npos; at = text.find(what, from))
    {
        std::memcpy(out, text.c_str() + from, at - from);
        out += at - from;
        std::memcpy(out, with.c_str(), with.size());
        out += with.size();
        from = at + what.size();
    }
    std::memcpy(out, text.c_str() + from, text.size() - from);
    return result;
}

} // namespace Common
