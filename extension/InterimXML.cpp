#include "extension/InterimXML.h"

namespace Interim
{
namespace
{
typedef Common::map<Common::string, Common::string> Attributes;

bool isWhiteSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

void skipWhiteSpace(const Common::string& text, unsigned& pos)
{
    while (pos < text.size() && isWhiteSpace(text[pos]))
        ++pos;
}

Common::string readTag(const Common::string& text, unsigned& pos)
{
    skipWhiteSpace(text, pos);
    if (pos >= text.size() || text[pos] != '<')
        return Common::string();
    ++pos;
    Common::string prefix;
    if (pos < text.size() && text[pos] == '/')
    {
        prefix = "/";
        ++pos;
    }
    unsigned start = pos;
    while (pos < text.size() && text[pos] != '>' && text[pos] != '/' && !isWhiteSpace(text[pos]))
        ++pos;
    return prefix + text.substr(start, pos - start);
}

void readAttribute(const Common::string& text, unsigned& pos, Attributes& attributes)
{
    skipWhiteSpace(text, pos);
    unsigned start = pos;
    bool single = false;
    bool dbl = false;
    while (pos < text.size() &&
           ((text[pos] != '>' && !isWhiteSpace(text[pos]) && text[pos] != '/') || single || dbl))
    {
        ++pos;
        char c = text[pos - 1];
        if (c == '\'')
            single = !single;
        else if (c == '"')
            dbl = !dbl;
    }
    Common::string piece = text.substr(start, pos - start);
    skipWhiteSpace(text, pos);
    unsigned equals = piece.find('=');
    if (equals == Common::string::npos)
    {
        attributes.insert(Attributes::value_type(piece, Common::string()));
        return;
    }
    Common::string value;
    if (piece.size() >= equals + 3)
        value = piece.substr(equals + 2, piece.size() - equals - 3);
    attributes.insert(Attributes::value_type(piece.substr(0, equals), value));
}

// False when no progress can be made (the text is not what Part 7.3 reads).
bool extractAttributes(const Common::string& text, unsigned& pos, Attributes& attributes)
{
    skipWhiteSpace(text, pos);
    while (pos < text.size() && text[pos] != '>' && text[pos] != '/')
    {
        unsigned before = pos;
        readAttribute(text, pos, attributes);
        if (pos == before)
            return false;
    }
    if (pos < text.size())
        ++pos;
    return true;
}

Common::string removeAll(Common::string text, const char* marker)
{
    return Common::Replace(text, marker, "");
}
} // namespace

bool XMLElement::hasAttribute(const Common::string& name) const
{
    return m_attributes.find(name) != m_attributes.end();
}

Common::string XMLElement::attribute(const Common::string& name) const
{
    Attributes::const_iterator found = m_attributes.find(name);
    return found == m_attributes.end() ? Common::string() : found->second;
}

bool XMLElement::hasElement(const Common::string& tag) const
{
    for (Common::list<Common::shared_ptr<XMLElement>>::const_iterator it = m_children.begin();
         it != m_children.end(); ++it)
        if ((*it)->m_tag == tag)
            return true;
    return false;
}

Common::shared_ptr<XMLElement> XMLElement::getElement(const Common::string& tag) const
{
    for (Common::list<Common::shared_ptr<XMLElement>>::const_iterator it = m_children.begin();
         it != m_children.end(); ++it)
        if ((*it)->m_tag == tag)
            return *it;
    return Common::shared_ptr<XMLElement>(new XMLElement(Common::string("null")));
}

Common::shared_ptr<XMLElement> XMLElement::parse(const Common::string& source)
{
    Common::string text = source;
    unsigned declaration = text.find("?>");
    if (declaration != Common::string::npos)
        text = text.substr(declaration + 2, text.size() - declaration - 2);
    for (unsigned open = text.find("<!--"); open != Common::string::npos; open = text.find("<!--"))
    {
        unsigned close = text.find("-->", open);
        Common::string after =
            close == Common::string::npos ? Common::string() : text.substr(close + 3, text.size() - close - 3);
        text = text.substr(0, open) + after;
    }
    text = removeAll(removeAll(text, "<![CDATA["), "]]>");

    Common::list<Common::shared_ptr<XMLElement>> stack; // top at the front
    Common::shared_ptr<XMLElement> current;
    unsigned pos = 0;
    while (pos < text.size())
    {
        Common::string tag = readTag(text, pos);
        if (tag.empty())
            break; // Part 7.3 leaves this open; stopping is the recommended handling
        Attributes attributes;
        if (!extractAttributes(text, pos, attributes))
            break;
        bool selfClosing = false;
        if (pos < text.size() && text[pos] == '>')
        {
            selfClosing = true;
            ++pos;
        }
        if (tag[0] == '/')
        {
            if (!stack.empty())
            {
                current = *stack.begin();
                stack.erase(stack.begin());
                if (!stack.empty())
                    current = *stack.begin();
            }
            continue;
        }
        Common::shared_ptr<XMLElement> element(new XMLElement(tag.substr(0, tag.size())));
        element->m_attributes = attributes;
        // readText: the character data up to the next "<" (not needed here).
        while (pos < text.size() && text[pos] != '<')
            ++pos;
        if (!selfClosing)
            stack.insert(stack.begin(), element);
        if (current.get())
            current->m_children.push_back(element);
        if (!selfClosing)
            current = element;
    }
    if (!current.get())
        return Common::shared_ptr<XMLElement>(new XMLElement(Common::string()));
    return current;
}

} // namespace Interim
