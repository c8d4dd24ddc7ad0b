#pragma once

#include "common/String.h"

namespace Common
{

// A string whose equality, searches and splitting ignore letter case (C
// locale). It shares buffers with Common::string and converts to one
// explicitly. Page names, query parameters and settings are istrings.
//
// Two irregularities are intended and relied upon:
// - rfind never reports a match that begins at position 0
//   (istring("abc").rfind("a") is npos).
// - operator< is never true, for any pair of values. A map keyed by istring
//   therefore puts every new key at the front.
// Out-of-range positions and counts are clamped as on Common::string.
class istring
{
public:
    static constexpr unsigned npos = string::npos;

    istring() {}
    istring(istring const& other) : m_text(other.m_text) {}
    istring(string const& text) : m_text(text) {}
    istring(char const* s, unsigned n = npos) : m_text(s, n) {}
    istring(char const* s, unsigned offset, unsigned count) : m_text(s, offset, count) {}
    explicit istring(char c) : m_text(c) {}

    istring& operator=(istring const& other);
    istring& operator=(string const& text);
    istring& operator=(char const* s);
    istring& operator=(char c);

    istring& operator+=(char const* s);
    istring& operator+=(string const& s);
    istring& operator+=(istring const& s);

    istring& replace(unsigned pos, unsigned n, istring const& s);
    istring& replace(unsigned pos, unsigned n, string const& s);
    istring& replace(unsigned pos, unsigned n, char const* s);

    unsigned find(char const* s, unsigned pos, unsigned n) const;
    unsigned find(char const* s, unsigned pos = 0) const;
    unsigned find(string const& s, unsigned pos = 0) const;
    unsigned find(istring const& s, unsigned pos = 0) const;
    unsigned find(char c, unsigned pos = 0) const;

    unsigned rfind(char const* s, unsigned pos, unsigned n) const;
    unsigned rfind(char const* s, unsigned pos = npos) const;
    unsigned rfind(string const& s, unsigned pos = npos) const;
    unsigned rfind(istring const& s, unsigned pos = npos) const;
    unsigned rfind(char c, unsigned pos = npos) const;

    istring substr(unsigned pos = 0, unsigned n = npos) const
    {
        return istring(m_text.substr(pos, n));
    }
    // Every separator (found ignoring case) splits; empty fields are kept.
    // `sep` must not be empty.
    list<istring, DefaultAllocator> split(istring const& sep) const;

    bool operator==(istring const& other) const;
    bool operator==(string const& other) const;
    bool operator==(char const* s) const;
    bool operator!=(istring const& other) const { return !(*this == other); }
    bool operator!=(string const& other) const { return !(*this == other); }
    bool operator!=(char const* s) const { return !(*this == s); }
    // Never true; see the class comment.
    bool operator<(istring const& other) const;
    bool operator<(string const& other) const;
    bool operator<(char const* s) const;

    unsigned size() const { return m_text.size(); }
    bool empty() const { return m_text.empty(); }
    char const* c_str() const { return m_text.c_str(); }
    void clear() { m_text.clear(); }
    char const& operator[](unsigned i) const { return m_text[i]; }

    explicit operator string() const { return m_text; }

private:
    bool equals(char const* s, unsigned n) const;

    string m_text;
};

istring operator+(istring const& a, istring const& b);
istring operator+(istring const& a, string const& b);
istring operator+(string const& a, istring const& b);
istring operator+(istring const& a, char const* b);
istring operator+(char const* a, istring const& b);

} // namespace Common
