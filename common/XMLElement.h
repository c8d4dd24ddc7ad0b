#pragma once

#include "common/List.h"
#include "common/LocalStaticAllocator.h"
#include "common/SharedPtr.h"
#include "common/SortedMap.h"
#include "common/String.h"
#include "common/StringLess.h"

namespace Common
{
namespace XML
{

class Parser;
class XMLParser;

// One node of an XML element tree: a tag, the character data that
// follows the start tag, attributes unique by name in ascending name order
// (Common::string's operator<; names that it cannot tell apart because they
// differ only after a NUL byte follow in byte order), and child elements in
// insertion order. Adding, finding or removing an attribute takes time
// logarithmic in the element's number of attributes.
//
// A tree owns its children through Common::shared_ptr; the same element may
// be the child of several parents, but a tree must not contain a cycle (an
// element that is its own descendant is never freed and makes the writer loop
// forever). Destruction is iterative: tearing down a tree of any depth uses a
// fixed amount of stack. Not thread-safe (plain reference counts).
//
// Elements come from a per-class pool of 200 (see LocalStaticAllocator).
class Element : public Common::LocalStaticAllocator<Element, 200, 8>
{
public:
    typedef Common::sorted_map<Common::string, Common::string, Common::StringLess> Attributes;
    typedef Common::list<Common::shared_ptr<Element>> Elements;
    typedef Attributes::const_iterator AttributeIterator;
    typedef Elements::const_iterator ElementIterator;

    // A new element with that tag, empty text, no attributes, no children.
    explicit Element(const Common::string& tag);
    ~Element();

    Common::string tag() const { return m_tag; }
    Common::string text() const { return m_text; }
    void Tag(const Common::string& tag) { m_tag = tag; }
    void Text(const Common::string& text) { m_text = text; }

    // Inserts the attribute, or replaces the value of one with that name.
    void Attribute(const Common::string& name, const Common::string& value);
    // The value, or "" when absent.
    Common::string attribute(const Common::string& name) const;
    bool hasAttribute(const Common::string& name) const;
    void RemoveAttribute(const Common::string& name);
    // (name, value) pairs in ascending name order.
    AttributeIterator attributeBegin() const { return m_attributes.begin(); }
    AttributeIterator attributeEnd() const { return m_attributes.end(); }

    // Appends a child at the end.
    void AddElement(Common::shared_ptr<Element> element);
    // Removes every child that is this very object (pointer identity; an
    // element with equal content is a different object and stays).
    void RemoveElement(Common::shared_ptr<Element> element);
    // The first child whose tag equals `tag` exactly (case-sensitive); when
    // there is none, a new detached element with the tag "null" (never an
    // empty pointer, never attached to this tree).
    Common::shared_ptr<Element> getElement(const Common::string& tag) const;
    bool hasElement(const Common::string& tag) const;
    // The children in order.
    ElementIterator elementBegin() const { return m_children.begin(); }
    ElementIterator elementEnd() const { return m_children.end(); }

private:
    friend class Parser;
    friend class XMLParser;

    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

    // For the parser: the text is shared, not built.
    Element(const Common::string& tag, const Common::string& text);

    // Releases `children` and their subtrees without recursion (see the
    // .cpp); true when it put something on `deferred`.
    static bool tearDown(Elements& children, Elements& deferred);

    Common::string m_tag;
    Common::string m_text;
    Attributes m_attributes;
    Elements m_children;
};

} // namespace XML
} // namespace Common
