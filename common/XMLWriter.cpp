// Parser::xml: the one-line writer.
//
// The text is produced by one walk over the tree with an explicit stack (no
// recursion, so any depth is written), run twice: once to count the bytes,
// once to copy them into a string of exactly that size. Appending piece by
// piece to a Common::string would copy the whole text at every step.
#include "common/XML.h"

#include <cstring>

namespace Common
{
namespace XML
{
namespace
{
class Counter
{
public:
    Counter() : m_size(0) {}
    void put(const char*, unsigned n) { m_size += n; }
    void put(const Common::string& s) { m_size += s.size(); }
    unsigned size() const { return m_size; }

private:
    unsigned m_size;
};

class Copier
{
public:
    explicit Copier(char* out) : m_out(out) {}
    void put(const char* s, unsigned n)
    {
        std::memcpy(m_out, s, n);
        m_out += n;
    }
    void put(const Common::string& s) { put(s.c_str(), s.size()); }

private:
    char* m_out;
};

// An element whose end tag is still to come, and its next child to write.
struct Frame
{
    Frame() : element(nullptr) {}
    Frame(const Element* e, Element::ElementIterator c) : element(e), next(c) {}
    const Element* element;
    Element::ElementIterator next;
};

template <class Sink> void startTag(const Element& e, Sink& sink)
{
    sink.put("<", 1);
    sink.put(e.tag());
    for (Element::AttributeIterator it = e.attributeBegin(); it != e.attributeEnd(); ++it)
    {
        sink.put(" ", 1);
        sink.put(it->first);
        sink.put("=\"", 2);
        sink.put(it->second);
        sink.put("\"", 1);
    }
}

template <class Sink> void endTag(const Element& e, Sink& sink)
{
    sink.put("</", 2);
    sink.put(e.tag());
    sink.put(">", 1);
}

template <class Sink> void write(const Element* top, Sink& sink)
{
    Common::list<Frame> stack; // front is the innermost open element
    const Element* e = top;
    for (;;)
    {
        if (e != nullptr)
        {
            startTag(*e, sink);
            if (e->elementBegin() != e->elementEnd())
            {
                sink.put(">", 1);
                stack.insert(stack.begin(), Frame(e, e->elementBegin()));
            }
            else if (!e->text().empty())
            {
                sink.put(">", 1);
                sink.put(e->text());
                endTag(*e, sink);
            }
            else
                sink.put("/>", 2);
        }
        // The next child to write, closing every element that has none left.
        e = nullptr;
        while (stack.begin() != stack.end())
        {
            Frame& frame = *stack.begin();
            if (frame.next != frame.element->elementEnd())
            {
                e = (frame.next++)->get();
                break;
            }
            endTag(*frame.element, sink);
            stack.erase(stack.begin());
        }
        if (e == nullptr && stack.begin() == stack.end())
            return;
    }
}
} // namespace

Common::string Parser::xml(Common::shared_ptr<Element> element) const
{
    if (element.get() == nullptr)
        return Common::string();
    Counter counter;
    write(element.get(), counter);
    char* bytes = nullptr;
    Common::string result = Common::string::uninitialized(counter.size(), bytes);
    Copier copier(bytes);
    write(element.get(), copier);
    return result;
}

} // namespace XML
} // namespace Common
