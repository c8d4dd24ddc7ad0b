#pragma once

#include "common/SharedPtr.h"
#include "common/String.h"
#include "common/XMLElement.h"

namespace Common
{
namespace XML
{

// Reads and writes element trees. Deliberately minimal: no entity
// handling, no escaping, no namespaces, no mixed content; the writer emits
// one line. No state; no error reports.
class Parser
{
public:
    // Empties `root` (tag and text "", no attributes, no children) and fills
    // it from `text`:
    // 1. Everything up to and including the first "?>" is dropped (the XML
    //    declaration, and any processing instruction before it).
    // 2. Comments are removed everywhere, as if by repeating "remove the
    //    first '<!--' up to and including the first '-->' found from that
    //    '<!--'" until no "<!--" is left (so "<!-->" is a whole comment, and
    //    a "<!--" formed by joining the text around a removed comment is
    //    removed in turn). A "<!--" with no "-->" after it removes everything
    //    from that "<!--" to the end of the text.
    // 3. Every "<![CDATA[" marker, then every "]]>" marker, is removed the
    //    same way (repeated until none is left), keeping the section's
    //    content as ordinary text.
    // 4. XMLParser::Parse builds the tree and gives `root` the tag, text and
    //    attributes of the document element and its children. A second
    //    top-level element becomes a child of the first; when it is not an
    //    empty-element tag it is also left as the current element, so it is
    //    that one which `root` receives. Malformed input yields whatever
    //    tree the steps build; the parse stops where no tag can be read.
    // Each step is one pass over the text: time is linear in its size.
    // A null `root` is left alone.
    void XML(const Common::string& text, Common::shared_ptr<Element> root) const;

    // The element and its subtree on one line: "<tag a=\"v\">children</tag>"
    // when it has children (its own text is then not written),
    // "<tag a=\"v\">text</tag>" when it has text, else "<tag a=\"v\"/>".
    // Attributes in name order; nothing is escaped; no declaration. Iterative,
    // so any depth is written; built once, so time is linear in the output.
    // Null children are skipped; a null element gives "".
    Common::string xml(Common::shared_ptr<Element> element) const;
};

} // namespace XML
} // namespace Common
