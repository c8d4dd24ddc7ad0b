#pragma once

#include "common/XMLElement.h"

namespace Common
{
namespace XML
{

// The scanner behind Parser::XML. Internal; no state. Every
// function scans `text` from the shared position `pos` and moves it forward;
// none reads at or past text.size(), whatever the input.
class XMLParser
{
public:
    // Space, tab, carriage return, line feed.
    static bool isWhiteSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
    static void SkipWhiteSpace(const Common::string& text, unsigned& pos);

    // Skips white space; if the character there is not "<", returns "" and
    // leaves `pos` there. Otherwise steps over "<" (and a "/", which becomes
    // the prefix of the result) and reads the name up to the first ">", "/",
    // white space or the end: "name" for a start tag, "/name" for an end tag.
    static Common::string readTag(const Common::string& text, unsigned& pos);

    // Skips white space, then reads attributes until ">" or "/" (or the end
    // of the text) and steps over that one character. A later duplicate name
    // replaces the earlier value.
    static void extractAttributes(const Common::string& text, unsigned& pos,
                                  Element::Attributes& attributes);

    // Reads one "name=\"value\"" piece (quotes of either kind). The piece runs
    // to ">", "/" or white space outside quotes, or to the end; a single quote
    // toggles the single-quote state and a double quote the double-quote
    // state, independently. The name is what precedes the first "=" (the
    // whole piece when there is none); the value lies between the character
    // after "=" and the last character of the piece ("" when that range is
    // empty). Values are not unescaped. Returns false, with nothing read, at
    // the end of the text.
    static bool readAttribute(const Common::string& text, unsigned& pos, Common::string& name,
                              Common::string& value);

    // From `pos` up to the next "<" or the end, as is.
    static Common::string readText(const Common::string& text, unsigned& pos);

    // Builds the tree and copies the last current
    // element into `root`. Iterative: the open elements are kept on an
    // explicit stack, so any nesting depth is handled.
    //
    // On malformed input:
    // - Where a tag is expected but none can be read (text after a child
    //   element, a "<" followed directly by ">", stray text), the parse stops
    //   there and the tree built so far is kept (and copied into `root`).
    // - An end tag while no element is open changes nothing.
    // - Running out of text inside a tag or an attribute ends the parse
    //   normally with what was built.
    static void Parse(Element* root, const Common::string& text);
};

} // namespace XML
} // namespace Common
