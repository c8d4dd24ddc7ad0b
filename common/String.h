#pragma once

#include "common/Signature.h"

namespace Common
{

template <class T, class Alloc> class list;
class DefaultAllocator;

// An immutable, reference-counted byte string.
//
// Copies share one buffer; every change builds a new buffer and detaches, so
// a copy never sees a later change of the string it was copied from. The
// buffer is always NUL-terminated and may hold embedded NULs. Length counts
// bytes, with no notion of an encoding.
//
// Out-of-range positions and counts: substr, replace and rfind clamp them to
// the string (a position past the end means the end; a count past the end
// means "to the end"), so no byte outside the buffer is ever read or written.
// Every in-range result is exactly the unclamped one. operator[] past the end
// yields the terminating NUL.
//
// Not thread-safe: the reference count is a plain integer. Do not copy or
// release one string from two threads at once.
class string : public Signature
{
public:
    static constexpr unsigned npos = 0xFFFFFFFFu;

    string();
    string(string const& other);
    string(char const* s, unsigned n = npos);
    string(char const* s, unsigned offset, unsigned count);
    explicit string(char c);
    ~string();

    string& operator=(string const& other);
    string& operator=(char const* s);
    string& operator=(char c);
    string& assign(string const& other);
    string& assign(char const* s, unsigned n);
    void clear();

    string& operator+=(string const& other);
    string& operator+=(char const* s);

    string& replace(unsigned pos, unsigned n, string const& s);
    string& replace(unsigned pos, unsigned n, char const* s);

    unsigned find(char const* s, unsigned pos, unsigned n) const;
    unsigned find(char const* s, unsigned pos = 0) const;
    unsigned find(string const& s, unsigned pos = 0) const;
    unsigned find(char c, unsigned pos = 0) const;

    unsigned rfind(char const* s, unsigned pos, unsigned n) const;
    unsigned rfind(char const* s, unsigned pos = npos) const;
    unsigned rfind(string const& s, unsigned pos = npos) const;
    unsigned rfind(char c, unsigned pos = npos) const;

    string substr(unsigned pos = 0, unsigned n = npos) const;
    // Every separator splits; empty fields are kept. `sep` must not be empty.
    list<string, DefaultAllocator> split(string const& sep) const;

    bool operator==(string const& other) const;
    bool operator==(char const* s) const;
    bool operator!=(string const& other) const { return !(*this == other); }
    bool operator!=(char const* s) const { return !(*this == s); }
    bool operator<(string const& other) const;
    bool operator<(char const* s) const;

    unsigned size() const { return *m_length - 1; }
    bool empty() const { return size() == 0; }
    char const* c_str() const { return m_buffer; }
    char const& operator[](unsigned i) const;

    // Builds a string of `n` bytes whose contents the caller writes through
    // `bytes` before the string is copied or read. Lets a reader fill the
    // buffer directly instead of copying through a temporary.
    static string uninitialized(unsigned n, char*& bytes);

private:
    void release();
    void detach();
    void install(unsigned* length, char* buffer);
    static char* allocateBuffer(unsigned n, unsigned*& length);

    unsigned* m_length;
    unsigned* m_references;
    char* m_buffer;
};

string operator+(string const& a, string const& b);
string operator+(char const* a, string const& b);
string operator+(string const& a, char const* b);

// Every occurrence of `what` in `text` replaced by `with`, scanning left to
// right and never rescanning replaced text. An empty `what` leaves the text.
string Replace(string const& text, string const& what, string const& with);

} // namespace Common
