#include "common/XMLParser.h"

#include <cstring>

namespace Common
{
namespace XML
{
namespace
{
// The scanning steps work on the raw bytes of the text: every read is
// preceded by a check of the position against `n`, the text's size.

void skipWhiteSpace(const char* s, unsigned n, unsigned& pos)
{
    while (pos < n && XMLParser::isWhiteSpace(s[pos]))
        ++pos;
}

// readTag without building the string: false when no "<" is there (pos is
// then after the white space). The name is [nameBegin, nameEnd).
bool scanTag(const char* s, unsigned n, unsigned& pos, bool& isEndTag, unsigned& nameBegin,
             unsigned& nameEnd)
{
    skipWhiteSpace(s, n, pos);
    if (pos >= n || s[pos] != '<')
        return false;
    ++pos;
    isEndTag = false;
    if (pos < n && s[pos] == '/')
    {
        isEndTag = true;
        ++pos;
    }
    nameBegin = pos;
    while (pos < n && s[pos] != '>' && s[pos] != '/' && !XMLParser::isWhiteSpace(s[pos]))
        ++pos;
    nameEnd = pos;
    return true;
}

// readAttribute's scan: the piece is [begin, end). The quote states are
// toggled by the character reached after each step.
bool scanAttribute(const char* s, unsigned n, unsigned& pos, unsigned& begin, unsigned& end)
{
    skipWhiteSpace(s, n, pos);
    if (pos >= n)
        return false;
    begin = pos;
    bool single = false;
    bool dbl = false;
    while (pos < n)
    {
        char c = s[pos];
        if (!single && !dbl && (c == '>' || c == '/' || XMLParser::isWhiteSpace(c)))
            break;
        ++pos;
        if (pos < n)
        {
            if (s[pos] == '\'')
                single = !single;
            else if (s[pos] == '"')
                dbl = !dbl;
        }
    }
    end = pos;
    skipWhiteSpace(s, n, pos);
    return true;
}

// The name is [begin, nameEnd); the value [valueBegin, valueEnd), possibly
// empty.
void splitAttribute(const char* s, unsigned begin, unsigned end, unsigned& nameEnd,
                    unsigned& valueBegin, unsigned& valueEnd)
{
    const void* found = std::memchr(s + begin, '=', end - begin);
    if (found == nullptr)
    {
        nameEnd = end;
        valueBegin = valueEnd = end;
        return;
    }
    nameEnd = static_cast<unsigned>(static_cast<const char*>(found) - s);
    // Between the opening quote (the character after "=") and the last
    // character of the piece (the closing quote).
    valueBegin = nameEnd + 2;
    valueEnd = end - 1;
    if (valueBegin >= valueEnd)
        valueBegin = valueEnd = end;
}

unsigned textEnd(const char* s, unsigned n, unsigned pos)
{
    if (pos >= n)
        return n;
    const void* found = std::memchr(s + pos, '<', n - pos);
    return found ? static_cast<unsigned>(static_cast<const char*>(found) - s) : n;
}

// The last few distinct short strings built by one parse, handed out again
// instead of being rebuilt: tag names, attribute names and the white space
// between tags repeat throughout a document, and a shared string costs no
// allocation. Strings are immutable, so sharing is invisible to callers.
class Recent
{
public:
    Recent() : m_count(0), m_next(0) {}

    const Common::string& get(const char* s, unsigned n)
    {
        for (unsigned i = 0; i < m_count; ++i)
            if (holds(m_items[i], s, n))
                return m_items[i];
        unsigned slot = m_next;
        m_next = (m_next + 1) % Size;
        if (m_count < Size)
            ++m_count;
        m_items[slot] = Common::string(s, n);
        return m_items[slot];
    }

private:
    // The last byte is compared before the rest. Inside an element with many
    // attributes, whose names rarely repeat, misses are the rule, and names
    // of one length (numbered or keyed ones) mostly differ in their last
    // byte: most misses then cost no call of memcmp.
    static bool holds(const Common::string& item, const char* s, unsigned n)
    {
        return item.size() == n && (n == 0 || (item.c_str()[n - 1] == s[n - 1] &&
                                               std::memcmp(item.c_str(), s, n) == 0));
    }

    enum
    {
        Size = 8
    };
    Common::string m_items[Size];
    unsigned m_count;
    unsigned m_next;
};

bool isBlank(const char* s, unsigned n)
{
    for (unsigned i = 0; i < n; ++i)
        if (!XMLParser::isWhiteSpace(s[i]))
            return false;
    return true;
}

// extractAttributes over raw bytes; attribute names come from `names`.
void extract(const char* s, unsigned n, unsigned& pos, Element::Attributes& attributes,
             Recent& names, const Common::string& empty)
{
    skipWhiteSpace(s, n, pos);
    // Each round consumes at least one character: the piece starts with one
    // that is neither white space nor ">" nor "/".
    while (pos < n && s[pos] != '>' && s[pos] != '/')
    {
        unsigned begin = 0;
        unsigned end = 0;
        if (!scanAttribute(s, n, pos, begin, end))
            break;
        unsigned nameEnd = 0;
        unsigned valueBegin = 0;
        unsigned valueEnd = 0;
        splitAttribute(s, begin, end, nameEnd, valueBegin, valueEnd);
        attributes.insert(Element::Attributes::value_type(
            names.get(s + begin, nameEnd - begin),
            valueBegin == valueEnd ? empty
                                   : Common::string(s + valueBegin, valueEnd - valueBegin)));
    }
    if (pos < n)
        ++pos;
}

// The stack of open elements, innermost last. Each entry is a child of the
// one below it (Parse appends every new element to the current one, which is
// the top while the stack is not empty), so the tree keeps them all alive as
// long as the bottom one lives: the stack holds plain pointers, and the
// caller holds the bottom one.
class OpenElements
{
public:
    OpenElements() : m_items(nullptr), m_size(0), m_capacity(0) {}
    ~OpenElements() { delete[] m_items; }
    OpenElements(const OpenElements&) = delete;
    OpenElements& operator=(const OpenElements&) = delete;

    bool empty() const { return m_size == 0; }
    Element* top() const { return m_items[m_size - 1]; }
    void pop() { --m_size; }
    void push(Element* element)
    {
        if (m_size == m_capacity)
        {
            unsigned capacity = m_capacity ? 2 * m_capacity : 16;
            Element** items = new Element*[capacity];
            for (unsigned i = 0; i < m_size; ++i)
                items[i] = m_items[i];
            delete[] m_items;
            m_items = items;
            m_capacity = capacity;
        }
        m_items[m_size++] = element;
    }

private:
    Element** m_items;
    unsigned m_size;
    unsigned m_capacity;
};
} // namespace

void XMLParser::SkipWhiteSpace(const Common::string& text, unsigned& pos)
{
    skipWhiteSpace(text.c_str(), text.size(), pos);
}

Common::string XMLParser::readTag(const Common::string& text, unsigned& pos)
{
    bool isEndTag = false;
    unsigned nameBegin = 0;
    unsigned nameEnd = 0;
    if (!scanTag(text.c_str(), text.size(), pos, isEndTag, nameBegin, nameEnd))
        return Common::string();
    // An end tag's "/" stands right before its name.
    if (isEndTag)
        --nameBegin;
    return Common::string(text.c_str() + nameBegin, nameEnd - nameBegin);
}

bool XMLParser::readAttribute(const Common::string& text, unsigned& pos, Common::string& name,
                              Common::string& value)
{
    unsigned begin = 0;
    unsigned end = 0;
    if (!scanAttribute(text.c_str(), text.size(), pos, begin, end))
        return false;
    const char* s = text.c_str();
    unsigned nameEnd = 0;
    unsigned valueBegin = 0;
    unsigned valueEnd = 0;
    splitAttribute(s, begin, end, nameEnd, valueBegin, valueEnd);
    name = Common::string(s + begin, nameEnd - begin);
    value = Common::string(s + valueBegin, valueEnd - valueBegin);
    return true;
}

void XMLParser::extractAttributes(const Common::string& text, unsigned& pos,
                                  Element::Attributes& attributes)
{
    Recent names;
    const Common::string empty;
    extract(text.c_str(), text.size(), pos, attributes, names, empty);
}

Common::string XMLParser::readText(const Common::string& text, unsigned& pos)
{
    const unsigned n = text.size();
    if (pos >= n)
        return Common::string();
    unsigned end = textEnd(text.c_str(), n, pos);
    Common::string result(text.c_str() + pos, end - pos);
    pos = end;
    return result;
}

void XMLParser::Parse(Element* root, const Common::string& text)
{
    const char* s = text.c_str();
    const unsigned n = text.size();
    // Shared by every element whose text is empty, so that none builds its own.
    const Common::string empty;

    Recent tags;
    Recent names;
    Recent blanks;

    unsigned pos = 0;
    // `current` is the top of `open` while that is not empty, else the
    // element last popped (or null before the first start tag). `document`
    // holds the bottom of `open`, or the element last popped, and through it
    // the whole subtree that is being built.
    Element* current = nullptr;
    OpenElements open;
    Common::shared_ptr<Element> document;
    while (pos < n)
    {
        bool isEndTag = false;
        unsigned nameBegin = 0;
        unsigned nameEnd = 0;
        if (!scanTag(s, n, pos, isEndTag, nameBegin, nameEnd) ||
            (!isEndTag && nameBegin == nameEnd))
            break; // nothing that can be consumed: stop, keep the tree

        if (isEndTag)
        {
            // Attributes of an end tag are read and dropped; its name is not
            // compared with the open element's.
            Element::Attributes ignored;
            extract(s, n, pos, ignored, names, empty);
            if (pos < n && s[pos] == '>')
                ++pos;
            if (!open.empty())
            {
                current = open.top();
                open.pop();
                if (!open.empty())
                    current = open.top();
            }
            continue;
        }

        Common::shared_ptr<Element> element(
            new Element(tags.get(s + nameBegin, nameEnd - nameBegin), empty));
        extract(s, n, pos, element->m_attributes, names, empty);
        bool selfClosing = false;
        if (pos < n && s[pos] == '>')
        {
            selfClosing = true;
            ++pos;
        }
        // readText; white space between tags is shared, not rebuilt.
        unsigned end = textEnd(s, n, pos);
        if (end > pos)
        {
            if (isBlank(s + pos, end - pos))
                element->m_text = blanks.get(s + pos, end - pos);
            else
                element->m_text = Common::string(s + pos, end - pos);
            pos = end;
        }

        // The element joins its parent first: replacing `document` below may
        // release the element that `current` points to.
        if (current != nullptr)
            current->m_children.push_back(element);
        if (!selfClosing)
        {
            if (open.empty())
                document = element;
            open.push(element.get());
            current = element.get();
        }
    }

    if (current == nullptr)
        return;
    root->m_tag = current->m_tag;
    root->m_text = current->m_text;
    // `current` is released with `document` on return: its attributes are
    // handed over, not copied.
    root->m_attributes.swap(current->m_attributes);
    for (Element::ElementIterator it = current->m_children.begin(); it != current->m_children.end();
         ++it)
        root->m_children.push_back(*it);
}

} // namespace XML
} // namespace Common
