#pragma once

// INTERIM: stands in for Common::XML::Element and Common::XML::Parser
// (Part 7.3) until they land on main (branch "xml"), for the one use the
// page engine has for them: reading the configuration file. It follows
// Part 7.3's preparation (declaration, comments and CDATA markers removed)
// and its tag, attribute and nesting rules, and keeps only what the
// configuration needs: the document element's children with their tags and
// attributes. When Part 7.3 lands, Configuration.cpp parses with
// Common::XML::Parser into a root element named "null" and this file and
// InterimXML.cpp are deleted.

#include "common/List.h"
#include "common/Map.h"
#include "common/SharedPtr.h"
#include "common/String.h"

namespace Interim
{

class XMLElement
{
public:
    explicit XMLElement(const Common::string& tag) : m_tag(tag) {}

    Common::string tag() const { return m_tag; }
    bool hasAttribute(const Common::string& name) const;
    Common::string attribute(const Common::string& name) const;
    bool hasElement(const Common::string& tag) const;
    // The first child with exactly that tag; a detached element "null" when
    // there is none.
    Common::shared_ptr<XMLElement> getElement(const Common::string& tag) const;

    // Parses `text` and returns the document element (tag "" and no children
    // for a text without elements).
    static Common::shared_ptr<XMLElement> parse(const Common::string& text);

private:
    Common::string m_tag;
    Common::map<Common::string, Common::string> m_attributes;
    Common::list<Common::shared_ptr<XMLElement>> m_children;
};

} // namespace Interim
