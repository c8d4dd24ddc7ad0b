// XML text parsed, written, parsed again and written again: the parser must
// survive any text, and for every tree that the format can carry the second
// write equals the first.
//
// The format escapes nothing, so some trees cannot be carried and read back
// otherwise by design: a name holding white space, "/", ">", "=" or a quote,
// a value holding a quote, a text holding "<" or beginning with ">" (read as
// the end of an empty-element tag), a written text holding one of
// the markers the parser removes ("?>", "<!--", "<![CDATA[", "]]>"), and a
// document element with neither text nor children (written "<a/>", which the
// parser reads as no document: an empty-element tag never becomes the
// current element). For those only the parse's survival is checked.

#include "common/XML.h"
#include "common/XMLElement.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace
{
typedef Common::shared_ptr<Common::XML::Element> ElementPtr;

bool holdsAny(const Common::string& text, const char* characters)
{
    for (unsigned i = 0; i < text.size(); ++i)
        if (text[i] == '\0' || std::strchr(characters, text[i]) != nullptr)
            return true;
    return false;
}

bool carried(const ElementPtr& element)
{
    if (holdsAny(element->tag(), " \t\r\n/>"))
        return false;
    const Common::string text = element->text();
    if (element->elementBegin() == element->elementEnd() &&
        (holdsAny(text, "<") || (text.size() > 0 && text[0] == '>')))
        return false;
    for (auto it = element->attributeBegin(); it != element->attributeEnd(); ++it)
        if (holdsAny(it->first, " \t\r\n/>=\"'") || holdsAny(it->second, "\"'"))
            return false;
    for (auto it = element->elementBegin(); it != element->elementEnd(); ++it)
        if (!carried(*it))
            return false;
    return true;
}

bool holdsMarker(const Common::string& text)
{
    for (const char* marker : {"?>", "<!--", "<![CDATA[", "]]>"})
        if (text.find(marker) != Common::string::npos)
            return true;
    return false;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Common::XML::Parser parser;
    ElementPtr tree(new Common::XML::Element("null"));
    parser.XML(Common::string(reinterpret_cast<const char*>(data), static_cast<unsigned>(size)),
               tree);
    const Common::string first = parser.xml(tree);

    ElementPtr again(new Common::XML::Element("null"));
    parser.XML(first, again);
    const Common::string second = parser.xml(again);

    const bool documentWritten = !tree->text().empty() || tree->elementBegin() != tree->elementEnd();
    if (documentWritten && carried(tree) && !holdsMarker(first) && first != second)
    {
        std::fprintf(stderr, "first write:  \"%s\"\nsecond write: \"%s\"\n", first.c_str(),
                     second.c_str());
        __builtin_trap();
    }
    return 0;
}
