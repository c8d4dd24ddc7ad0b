#pragma once

// Helpers shared by the XML tests.
#include "common/XML.h"
#include "common/XMLElement.h"

#include <string>

namespace XMLTest
{
typedef Common::shared_ptr<Common::XML::Element> ElementPtr;

inline ElementPtr element(char const* tag)
{
    return ElementPtr(new Common::XML::Element(tag));
}

// Parses `text` into a fresh root made as the system makes it (tag "null").
inline ElementPtr parse(Common::string const& text)
{
    ElementPtr root = element("null");
    Common::XML::Parser().XML(text, root);
    return root;
}

inline std::string write(ElementPtr const& e)
{
    return Common::XML::Parser().xml(e).c_str();
}

inline std::string str(Common::string const& s)
{
    return std::string(s.c_str(), s.size());
}

inline unsigned childCount(ElementPtr const& e)
{
    unsigned n = 0;
    for (auto it = e->elementBegin(); it != e->elementEnd(); ++it)
        ++n;
    return n;
}

inline ElementPtr child(ElementPtr const& e, unsigned index)
{
    auto it = e->elementBegin();
    for (unsigned i = 0; i < index && it != e->elementEnd(); ++i)
        ++it;
    return it == e->elementEnd() ? ElementPtr() : *it;
}

// "name=value" pairs in iteration order, joined by ",".
inline std::string attributes(ElementPtr const& e)
{
    std::string out;
    for (auto it = e->attributeBegin(); it != e->attributeEnd(); ++it)
    {
        if (!out.empty())
            out += ",";
        out += str(it->first) + "=" + str(it->second);
    }
    return out;
}

// Tags of the children in order, joined by ",".
inline std::string childTags(ElementPtr const& e)
{
    std::string out;
    for (auto it = e->elementBegin(); it != e->elementEnd(); ++it)
    {
        if (!out.empty())
            out += ",";
        out += it->get() ? str((*it)->tag()) : "<null>";
    }
    return out;
}

// True when the root is what an empty or tag-free text leaves.
inline bool isEmptyRoot(ElementPtr const& e)
{
    return e->tag().empty() && e->text().empty() && e->attributeBegin() == e->attributeEnd() &&
           e->elementBegin() == e->elementEnd();
}
} // namespace XMLTest
