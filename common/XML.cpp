#include "common/XML.h"

#include "common/XMLParser.h"

#include <cstring>

namespace Common
{
namespace XML
{
namespace
{
// A scratch buffer for one pass; the result string is built from it once.
class Buffer
{
public:
    explicit Buffer(unsigned capacity) : m_bytes(new char[capacity > 0 ? capacity : 1]), m_size(0)
    {
    }
    ~Buffer() { delete[] m_bytes; }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    void append(const char* s, unsigned n)
    {
        std::memcpy(m_bytes + m_size, s, n);
        m_size += n;
    }
    void push(char c) { m_bytes[m_size++] = c; }
    bool endsWith(const char* marker, unsigned length) const
    {
        return m_size >= length && std::memcmp(m_bytes + m_size - length, marker, length) == 0;
    }
    void drop(unsigned length) { m_size -= length; }
    Common::string str() const { return Common::string(m_bytes, m_size); }

private:
    char* m_bytes;
    unsigned m_size;
};

const unsigned npos = Common::string::npos;

// First position >= from where `marker` (length >= 1) starts, or npos. Jumps
// between candidates with memchr: these scans run over whole documents.
unsigned findMarker(const Common::string& text, unsigned from, const char* marker, unsigned length)
{
    const char* s = text.c_str();
    const unsigned n = text.size();
    while (from < n && n - from >= length)
    {
        const void* hit = std::memchr(s + from, marker[0], n - from - length + 1);
        if (hit == nullptr)
            return npos;
        unsigned at = static_cast<unsigned>(static_cast<const char*>(hit) - s);
        if (std::memcmp(s + at, marker, length) == 0)
            return at;
        from = at + 1;
    }
    return npos;
}

// The declaration: everything up to and including the first "?>" goes.
Common::string stripDeclaration(const Common::string& text)
{
    unsigned at = findMarker(text, 0, "?>", 2);
    if (at == npos)
        return text;
    return Common::string(text.c_str() + at + 2, text.size() - at - 2);
}

// Comments go, in one pass. Equivalent to "while the text has a '<!--', cut from
// the first one to the end of the first '-->' found from it": the output
// never holds a "<!--" (one is cut the moment its last character arrives,
// also when it is formed across a cut), and that first "<!--" is always the
// one whose end arrives first.
Common::string stripComments(const Common::string& text)
{
    const char* s = text.c_str();
    const unsigned n = text.size();
    unsigned first = findMarker(text, 0, "<!--", 4);
    if (first == npos)
        return text;

    Buffer out(n);
    unsigned pos = first;
    out.append(s, pos);
    while (pos < n)
    {
        // Only a "-" can complete a "<!--": copy up to and including the next.
        const void* dash = std::memchr(s + pos, '-', n - pos);
        unsigned upTo = dash ? static_cast<unsigned>(static_cast<const char*>(dash) - s) + 1 : n;
        out.append(s + pos, upTo - pos);
        pos = upTo;
        if (!out.endsWith("<!--", 4))
            continue;
        out.drop(4);
        // "-->" searched from the "<!--": it may use the marker's own "--"
        // ("<!-->") or its last "-" ("<!--->").
        if (pos < n && s[pos] == '>')
            pos += 1;
        else if (pos + 1 < n && s[pos] == '-' && s[pos + 1] == '>')
            pos += 2;
        else
        {
            unsigned close = findMarker(text, pos, "-->", 3);
            if (close == npos)
                break; // no end: the rest of the text goes with it
            pos = close + 3;
        }
    }
    return out.str();
}

// One marker goes, in one pass: the same as removing its first
// occurrence until there is none (the output never holds the marker).
Common::string removeAll(const Common::string& text, const char* marker)
{
    const unsigned length = static_cast<unsigned>(std::strlen(marker));
    unsigned first = findMarker(text, 0, marker, length);
    if (first == npos)
        return text;

    const char* s = text.c_str();
    const unsigned n = text.size();
    const char last = marker[length - 1];
    Buffer out(n);
    unsigned pos = first;
    out.append(s, pos);
    while (pos < n)
    {
        // Only the marker's last character can complete it.
        const void* hit = std::memchr(s + pos, last, n - pos);
        unsigned upTo = hit ? static_cast<unsigned>(static_cast<const char*>(hit) - s) + 1 : n;
        out.append(s + pos, upTo - pos);
        pos = upTo;
        if (out.endsWith(marker, length))
            out.drop(length);
    }
    return out.str();
}
} // namespace

void Parser::XML(const Common::string& text, Common::shared_ptr<Element> root) const
{
    if (root.get() == nullptr)
        return;
    root->m_tag.clear();
    root->m_text.clear();
    root->m_attributes.clear();
    root->m_children.clear();

    Common::string prepared = stripDeclaration(text);
    prepared = stripComments(prepared);
    prepared = removeAll(prepared, "<![CDATA[");
    prepared = removeAll(prepared, "]]>");
    XMLParser::Parse(root.get(), prepared);
}

} // namespace XML
} // namespace Common
