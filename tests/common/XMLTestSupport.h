#pragma once

// Helpers shared by the XML tests.
#include "common/XML.h"
#include "common/XMLElement.h"
#include "tests/support/Text.h"

#include <string>

namespace XMLTest
{
typedef Common::shared_ptr<Common::XML::Element> ElementPtr;

inline ElementPtr element(char const* tag)
{
    return ElementPtr(new Common::XML::Element(tag));
}

// Parses `text` into a fresh root made as the system makes it (tag "null").
// The text is copied with its exact length, so that a read past its end is a
// heap overflow the sanitized build reports.
inline ElementPtr parse(std::string const& text)
{
    ElementPtr root = element("null");
    Common::XML::Parser().XML(Common::string(text.data(), unsigned(text.size())), root);
    return root;
}

inline std::string write(ElementPtr const& e)
{
    return text(Common::XML::Parser().xml(e));
}

// An empty root (what a text without tags leaves) is written like this.
char const* const kEmptyRoot = "</>";
} // namespace XMLTest
