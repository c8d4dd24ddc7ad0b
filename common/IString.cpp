#include "common/IString.h"

#include "common/CaseCompare.h"
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
} // namespace

istring& istring::operator=(istring const& other)
{
    m_text = other.m_text;
    return *this;
}
istring& istring::operator=(string const& text)
{
    m_text = text;
    return *this;
}
istring& istring::operator=(char const* s)
{
    m_text = s;
    return *this;
}
istring& istring::operator=(char c)
{
    m_text = c;
    return *this;
}

istring& istring::operator+=(char const* s)
{
    m_text += s;
    return *this;
}
istring& istring::operator+=(string const& s)
{
    m_text += s;
    return *this;
}
istring& istring::operator+=(istring const& s)
{
    m_text += s.m_text;
    return *this;
}

istring& istring::replace(unsigned pos, unsigned n, istring const& s)
{
    m_text.replace(pos, n, s.m_text);
    return *this;
}
istring& istring::replace(unsigned pos, unsigned n, string const& s)
{
    m_text.replace(pos, n, s);
    return *this;
}
istring& istring::replace(unsigned pos, unsigned n, char const* s)
{
    m_text.replace(pos, n, s);
    return *this;
}

unsigned istring::find(char const* s, unsigned pos, unsigned n) const
{
    return TextSearch::forward(c_str(), size(), orEmpty(s), pos, n, true);
}
unsigned istring::find(char const* s, unsigned pos) const
{
    return find(s, pos, lengthOf(s));
}
unsigned istring::find(string const& s, unsigned pos) const
{
    return find(s.c_str(), pos, s.size());
}
unsigned istring::find(istring const& s, unsigned pos) const
{
    return find(s.c_str(), pos, s.size());
}
unsigned istring::find(char c, unsigned pos) const
{
    return find(&c, pos, 1);
}

// The downward scan stops before position 0 (lowest position 1).
unsigned istring::rfind(char const* s, unsigned pos, unsigned n) const
{
    return TextSearch::backward(c_str(), size(), orEmpty(s), pos, n, true, 1);
}
unsigned istring::rfind(char const* s, unsigned pos) const
{
    return rfind(s, pos, lengthOf(s));
}
unsigned istring::rfind(string const& s, unsigned pos) const
{
    return rfind(s.c_str(), pos, s.size());
}
unsigned istring::rfind(istring const& s, unsigned pos) const
{
    return rfind(s.c_str(), pos, s.size());
}
unsigned istring::rfind(char c, unsigned pos) const
{
    return rfind(&c, pos, 1);
}

list<istring, DefaultAllocator> istring::split(istring const& sep) const
{
    list<istring, DefaultAllocator> fields;
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

bool istring::equals(char const* s, unsigned n) const
{
    return size() == n && memicmp(c_str(), s, static_cast<int>(n)) == 0;
}

bool istring::operator==(istring const& other) const
{
    return equals(other.c_str(), other.size());
}
bool istring::operator==(string const& other) const
{
    return equals(other.c_str(), other.size());
}
bool istring::operator==(char const* s) const
{
    return equals(orEmpty(s), lengthOf(s));
}

bool istring::operator<(istring const& other) const
{
    return stricmp(c_str(), other.c_str()) < 0;
}
bool istring::operator<(string const& other) const
{
    return stricmp(c_str(), other.c_str()) < 0;
}
bool istring::operator<(char const* s) const
{
    return stricmp(c_str(), orEmpty(s)) < 0;
}

istring operator+(istring const& a, istring const& b)
{
    istring result(a);
    result += b;
    return result;
}
istring operator+(istring const& a, string const& b)
{
    istring result(a);
    result += b;
    return result;
}
istring operator+(string const& a, istring const& b)
{
    istring result(a);
    result += b;
    return result;
}
istring operator+(istring const& a, char const* b)
{
    istring result(a);
    result += b;
    return result;
}
istring operator+(char const* a, istring const& b)
{
    istring result(a);
    result += b;
    return result;
}

} // namespace Common
