// The parser: the scanning steps of XMLParser and the tree that
// Parse builds from well-formed documents.
#include "common/XMLParser.h"

#include "XMLTestSupport.h"

#include <gtest/gtest.h>

using Common::XML::XMLParser;
using namespace XMLTest;

namespace
{

TEST(XMLScanner, WhiteSpaceIsSpaceTabCarriageReturnAndLineFeedOnly)
{
    for (char c : {' ', '\t', '\r', '\n'})
        EXPECT_TRUE(XMLParser::isWhiteSpace(c)) << int(c);
    for (char c : {'\v', '\f', '\0', 'a'})
        EXPECT_FALSE(XMLParser::isWhiteSpace(c)) << int(c);
    Common::string text(" \t\r\nx ");
    unsigned pos = 0;
    XMLParser::SkipWhiteSpace(text, pos);
    EXPECT_EQ(4u, pos);
    pos = 5;
    XMLParser::SkipWhiteSpace(text, pos);
    XMLParser::SkipWhiteSpace(text, pos); // at the end: stays
    EXPECT_EQ(6u, pos);
}

TEST(XMLScanner, ReadTagNameEndsAtSlashGreaterThanWhiteSpaceOrTheEnd)
{
    struct
    {
        char const* text;
        unsigned start;
        char const* tag;
        unsigned pos;
    } const cases[] = {
        {"  <PCIDevice Index=\"0\">", 0, "PCIDevice", 12},
        {"</name>", 0, "/name", 6},
        {"<b/>", 0, "b", 2},
        {"<b\n>", 0, "b", 2},
        {"<trunc", 0, "trunc", 6},
        // Without a less-than sign: nothing, and no move past the text.
        {"  hi<a>", 0, "", 2},
        {"  hi<a>", 2, "", 2},
        {"  hi<a>", 7, "", 7},
    };
    for (auto const& c : cases)
    {
        unsigned pos = c.start;
        EXPECT_EQ(c.tag, str(XMLParser::readTag(c.text, pos))) << c.text;
        EXPECT_EQ(c.pos, pos) << c.text;
    }
}

TEST(XMLScanner, ReadAttributeSplitsNameAndTheValueBetweenItsDelimiters)
{
    struct
    {
        char const* text;
        char const* name;
        char const* value;
        unsigned pos;
    } const cases[] = {
        {" id=\"1A2B00C13C4DABCD\" next", "id", "1A2B00C13C4DABCD", 23},
        // White space, slash and greater-than stay inside quotes.
        {"value='C:\\Program Files\\a/b>c'/>", "value", "C:\\Program Files\\a/b>c", 30},
        {"Name=\"Stratum Array 5e/532\">", "Name", "Stratum Array 5e/532", 27},
        {"a=\"&lt;&amp;&#65;\"", "a", "&lt;&amp;&#65;", 18}, // not unescaped
        {"checked>", "checked", "", 7},
        // The value lies between the character after '=' and the last one.
        {"a=xyz>", "a", "y", 5},
        {"a=>", "a", "", 2},
        {"=\"v\">", "", "v", 4},
        // A single quote inside a double-quoted value opens the single-quote
        // state, which stays open after the closing double quote: the piece
        // runs on to the end. Such values do not round-trip.
        {"n=\"it's\" m='x'>", "n", "it's\" m='x'", 15},
        {"n=\"say 'hi'\" m", "n", "say 'hi'", 13}, // balanced: harmless
    };
    for (auto const& c : cases)
    {
        Common::string name, value;
        unsigned pos = 0;
        ASSERT_TRUE(XMLParser::readAttribute(c.text, pos, name, value)) << c.text;
        EXPECT_EQ(c.name, str(name)) << c.text;
        EXPECT_EQ(c.value, str(value)) << c.text;
        EXPECT_EQ(c.pos, pos) << c.text;
    }

    Common::string name("unchanged"), value;
    unsigned pos = 0;
    EXPECT_FALSE(XMLParser::readAttribute("   ", pos, name, value));
    EXPECT_EQ(3u, pos);
    EXPECT_EQ("unchanged", str(name));
}

TEST(XMLScanner, ExtractAttributesStepsOverTheClosingCharacterAndTheLastDuplicateWins)
{
    Common::XML::Element::Attributes attributes;
    unsigned pos = 0;
    XMLParser::extractAttributes(" b=\"2\"  a='1'\n>rest", pos, attributes);
    EXPECT_EQ(15u, pos);
    ASSERT_EQ(2u, attributes.size());
    EXPECT_EQ("a", str(attributes.begin()->first));
    EXPECT_EQ("1", str(attributes.begin()->second));

    attributes.clear();
    pos = 0;
    XMLParser::extractAttributes("x=\"1\" x=\"2\"/>", pos, attributes);
    EXPECT_EQ(12u, pos); // stepped over "/", now at ">"
    ASSERT_EQ(1u, attributes.size());
    EXPECT_EQ("2", str(attributes.begin()->second));
}

TEST(XMLScanner, ReadTextRunsToTheNextLessThanSignOrTheEnd)
{
    Common::string text("Stratum Array &amp; more </name>");
    unsigned pos = 0;
    EXPECT_EQ("Stratum Array &amp; more ", str(XMLParser::readText(text, pos)));
    EXPECT_EQ(25u, pos);
    EXPECT_EQ("", str(XMLParser::readText(text, pos)));
    EXPECT_EQ(25u, pos);
    pos = 27;
    EXPECT_EQ("name>", str(XMLParser::readText(text, pos)));
    EXPECT_EQ(32u, pos);
}

TEST(XMLParse, DocumentsGiveTheTreeTheyDescribe)
{
    struct
    {
        char const* text;
        char const* written;
    } const cases[] = {
        {"<a>hi</a>", "<a>hi</a>"},
        {"<AllBoards version=\"2\"><PCI/><Other x='1'/></AllBoards>",
         "<AllBoards version=\"2\"><PCI/><Other x=\"1\"/></AllBoards>"},
        // Entity references stay as written.
        {"<a v=\"&quot;x&quot; &lt;\"></a>", "<a v=\"&quot;x&quot; &lt;\"/>"},
        {"<r><a/><b /><c x=\"1\"/><d x=\"1\" /></r>", "<r><a/><b/><c x=\"1\"/><d x=\"1\"/></r>"},
        // Attributes in any order are kept in name order; the last duplicate wins.
        {"<P VendorID=\"0E11\" Bus=\"02\" Name=\"Stratum Array\" Index=\"0\"></P>",
         "<P Bus=\"02\" Index=\"0\" Name=\"Stratum Array\" VendorID=\"0E11\"/>"},
        {"<a k=\"1\" k=\"2\"></a>", "<a k=\"2\"/>"},
        {"\n\t <a \n x=\"1\"\t>\n <b\n/> \n</a >\n", "<a x=\"1\"><b> \n</b></a>"},
        // Tags are case-sensitive; end-tag names are not compared.
        {"<Root><PCI/><pci/></Root>", "<Root><PCI/><pci/></Root>"},
        {"<a><b></x></y>", "<a><b/></a>"},
        // A second top-level empty element becomes a child of the first; a
        // second one with an end tag stays current and is what the root gets.
        {"<a><x/></a><b/>", "<a><x/><b/></a>"},
        {"<a><x/></a><b><y/></b>", "<b><y/></b>"},
        {"<a></a>", "<a/>"},
    };
    for (auto const& c : cases)
        EXPECT_EQ(c.written, write(parse(c.text))) << c.text;
}

TEST(XMLParse, TextIsWhatFollowsAStartTagKeptExactly)
{
    ElementPtr root = parse("<a> Stratum Array &amp; 5e&#47;532\n\t</a>");
    EXPECT_EQ(" Stratum Array &amp; 5e&#47;532\n\t", str(root->text()));
    root = parse("<a>\n  <b>x</b>\n</a>");
    EXPECT_EQ("\n  ", str(root->text()));
    EXPECT_EQ("x", str(child(root, 0)->text()));
    // Empty-element tags too take the text that follows them.
    root = parse("<cfg><UrlBase value=\"u\"/>\n  <WorkingDir value=\"w\"/></cfg>");
    EXPECT_EQ("UrlBase,WorkingDir", childTags(root));
    EXPECT_EQ("\n  ", str(child(root, 0)->text()));
    EXPECT_EQ("", str(child(root, 1)->text()));
}

TEST(XMLParse, ADocumentThatIsOneEmptyElementTagLeavesTheRootEmpty)
{
    // An empty-element tag never becomes the current element, and with no
    // current element it is attached nowhere. So the inventory of a machine
    // without storage controllers, written as <AllStorage PCIDeviceCount="0"/>,
    // reads back as an empty root.
    EXPECT_TRUE(isEmptyRoot(parse("<AllStorage PCIDeviceCount=\"0\"/>")));
    EXPECT_TRUE(isEmptyRoot(parse("<a/><b/>")));
}

TEST(XMLParse, ParsingEmptiesTheRootFirstAndLeavesTakenChildrenAndTheTextIntact)
{
    ElementPtr root = element("old");
    root->Text("old text");
    root->Attribute("stale", "1");
    root->AddElement(element("gone"));
    Common::XML::Parser().XML("<new a=\"1\"><b><c/></b></new>", root);
    EXPECT_EQ("<new a=\"1\"><b><c/></b></new>", write(root));

    ElementPtr b = child(root, 0);
    Common::string text("no tags here <?xml?><!-- c --><![CDATA[x]]>");
    Common::XML::Parser().XML(text, root);
    EXPECT_TRUE(isEmptyRoot(root));
    EXPECT_EQ("<b><c/></b>", write(b));
    EXPECT_EQ("no tags here <?xml?><!-- c --><![CDATA[x]]>", str(text));

    Common::XML::Parser().XML("<a/>", ElementPtr()); // a null root is left alone
}

} // namespace
