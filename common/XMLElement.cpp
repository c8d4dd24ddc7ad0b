#include "common/XMLElement.h"

namespace Common
{
namespace XML
{
namespace
{
// Asking an untouched list for its first element allocates its sentinel
// (lists allocate it lazily); should that fail, the list was untouched and so empty. This
// keeps destructors from throwing.
bool hasChildren(const Element::Elements& children)
{
    try
    {
        return children.begin() != children.end();
    }
    catch (...)
    {
        return false;
    }
}
} // namespace

Element::Element(const Common::string& tag) : m_tag(tag), m_text() {}

Element::Element(const Common::string& tag, const Common::string& text) : m_tag(tag), m_text(text)
{
}

// Destroying an element empties tag, text, attributes and children; the
// members' own destructors do that. What is added here is the order: the
// subtree is torn down depth first, children before parents, with an explicit
// stack of (list, position) frames on the heap, so that no destructor run from
// here ever has a child with children of its own to release: the machine
// stack in use stays the same whatever the depth of the tree, and elements
// are freed in the order they were built.
//
// A child that is also held elsewhere (another parent, a caller) is not
// descended into; it is only let go. One that has children is first put on
// the `deferred` list, so that when its other holders turn out to be in this
// same subtree (the same element added twice), it is still torn down here,
// iteratively, once the last of them has let go.
//
// The frames and the deferred list take memory. Should that run out, the
// child concerned is simply released, which tears its subtree down through
// its own destructor (recursion, but no failure).
namespace
{
struct Frame
{
    Frame() : children(nullptr) {}
    explicit Frame(Element::Elements* list) : children(list), at(list->begin()) {}
    Element::Elements* children;
    Element::Elements::iterator at;
};

bool push(Common::list<Frame>& stack, Element::Elements* children)
{
    try
    {
        stack.insert(stack.begin(), Frame(children));
        return true;
    }
    catch (...)
    {
        return false;
    }
}

bool defer(Element::Elements& deferred, const Common::shared_ptr<Element>& element)
{
    try
    {
        deferred.push_back(element);
        return true;
    }
    catch (...)
    {
        return false;
    }
}
} // namespace

bool Element::tearDown(Elements& children, Elements& deferred)
{
    bool deferredAny = false;
    Common::list<Frame> stack; // front: the innermost list being emptied
    if (!push(stack, &children))
    {
        children.clear();
        return false;
    }
    while (stack.begin() != stack.end())
    {
        Frame& top = *stack.begin();
        if (top.at == top.children->end())
        {
            stack.erase(stack.begin());
            // The parent's position is the element just emptied: it dies
            // childless.
            if (stack.begin() != stack.end())
            {
                Frame& parent = *stack.begin();
                parent.at = parent.children->erase(parent.at);
            }
            continue;
        }
        Element* child = top.at->get();
        if (child != nullptr && hasChildren(child->m_children))
        {
            if (top.at->use_count() == 1)
            {
                if (push(stack, &child->m_children))
                    continue;
            }
            else if (defer(deferred, *top.at))
                deferredAny = true;
        }
        top.at = top.children->erase(top.at);
    }
    return deferredAny;
}

Element::~Element()
{
    if (!hasChildren(m_children))
        return;
    Elements deferred;
    if (!tearDown(m_children, deferred))
        return;
    while (deferred.begin() != deferred.end())
    {
        Common::shared_ptr<Element> next = *deferred.begin();
        deferred.erase(deferred.begin());
        if (next.use_count() == 1)
            tearDown(next->m_children, deferred);
    } // `next` is released here: childless by now, or still owned elsewhere
}

void Element::Attribute(const Common::string& name, const Common::string& value)
{
    m_attributes.insert(Attributes::value_type(name, value));
}

Common::string Element::attribute(const Common::string& name) const
{
    AttributeIterator found = m_attributes.find(name);
    if (found == m_attributes.end())
        return Common::string();
    return found->second;
}

bool Element::hasAttribute(const Common::string& name) const
{
    return m_attributes.find(name) != m_attributes.end();
}

void Element::RemoveAttribute(const Common::string& name)
{
    m_attributes.erase(name);
}

void Element::AddElement(Common::shared_ptr<Element> element)
{
    m_children.push_back(element);
}

void Element::RemoveElement(Common::shared_ptr<Element> element)
{
    // `element` is a copy, so erasing the node it came from cannot leave it
    // dangling.
    Elements::iterator it = m_children.begin();
    while (it != m_children.end())
    {
        if (it->get() == element.get())
            it = m_children.erase(it);
        else
            ++it;
    }
}

Common::shared_ptr<Element> Element::getElement(const Common::string& tag) const
{
    for (ElementIterator it = m_children.begin(); it != m_children.end(); ++it)
        if (it->get() != nullptr && (*it)->m_tag == tag)
            return *it;
    return Common::shared_ptr<Element>(new Element(Common::string("null")));
}

bool Element::hasElement(const Common::string& tag) const
{
    for (ElementIterator it = m_children.begin(); it != m_children.end(); ++it)
        if (it->get() != nullptr && (*it)->m_tag == tag)
            return true;
    return false;
}

} // namespace XML
} // namespace Common
