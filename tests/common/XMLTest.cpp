// Every text, malformed too, parses to some tree without reading outside the
// text (the sanitized build checks).
#include "common/XML.h"
#include "common/XMLElement.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <pthread.h>
#include <string>

namespace
{

typedef Common::shared_ptr<Common::XML::Element> ElementPtr;

ElementPtr element(char const* tag)
{
    return ElementPtr(new Common::XML::Element(tag));
}

// Parses `text` into a fresh root made as the system makes it (tag "null").
// The text is copied with its exact length, so that a read past its end is a
// heap overflow the sanitized build reports.
ElementPtr parse(std::string const& text)
{
    ElementPtr root = element("null");
    Common::XML::Parser().XML(Common::string(text.data(), unsigned(text.size())), root);
    return root;
}

std::string write(ElementPtr const& e)
{
    return text(Common::XML::Parser().xml(e));
}

// An empty root (what a text without tags leaves) is written like this.
char const* const kEmptyRoot = "</>";

TEST(XMLElement, AttributesAreUniqueByNameAndWrittenInAscendingNameOrder)
{
    ElementPtr e = element("PCIDevice");
    for (char const* name : {"VendorID", "Bus", "Name", "BootOrder", "Index", "b", "Bu"})
        e->Attribute(name, "0");
    e->Attribute("Index", "7"); // replaces
    e->Attribute("Name", "");   // an empty value is still present
    e->RemoveAttribute("Bus");
    e->RemoveAttribute("missing");
    EXPECT_TRUE(e->hasAttribute("Name"));
    EXPECT_FALSE(e->hasAttribute("name")); // names are case-sensitive
    EXPECT_EQ("", text(e->attribute("name")));
    // strcmp order: upper case before lower case, shorter prefix first.
    EXPECT_EQ("<PCIDevice BootOrder=\"0\" Bu=\"0\" Index=\"7\" Name=\"\" VendorID=\"0\" b=\"0\"/>",
              write(e));

    // Names that differ only after a NUL byte are distinct.
    Common::string const first("id\0a", 4), second("id\0b", 4);
    e = element("dev");
    e->Attribute(second, "2");
    e->Attribute(first, "1");
    e->Attribute("id", "0");
    e->RemoveAttribute(first);
    EXPECT_EQ("0", text(e->attribute("id")));
    EXPECT_FALSE(e->hasAttribute(first));
    EXPECT_EQ("2", text(e->attribute(second)));
}

TEST(XMLElement, ChildrenAreSharedFoundByExactTagAndAMissingOneIsADetachedPlaceholder)
{
    ElementPtr root = element("AllBoards");
    ElementPtr first = element("PCI");
    root->AddElement(element("pci"));
    root->AddElement(first);
    root->AddElement(ElementPtr()); // skipped by searches and the writer
    root->AddElement(element("PCI"));
    first->Text("changed after adding");
    EXPECT_EQ(first.get(), root->getElement("PCI").get());
    EXPECT_FALSE(root->hasElement("Pci"));
    EXPECT_FALSE(root->hasElement(""));
    EXPECT_EQ("<AllBoards><pci/><PCI>changed after adding</PCI><PCI/></AllBoards>", write(root));

    ElementPtr missing = root->getElement("Missing");
    EXPECT_EQ("null", text(missing->tag()));
    EXPECT_NE(missing.get(), root->getElement("Missing").get());
    missing->AddElement(element("child")); // changes nothing in the tree
    EXPECT_EQ("null", text(root->getElement("a")->getElement("b")->tag()));
    EXPECT_EQ("<AllBoards><pci/><PCI>changed after adding</PCI><PCI/></AllBoards>", write(root));
    ElementPtr real = element("null");
    root->AddElement(real);
    EXPECT_EQ(real.get(), root->getElement("null").get());
}

// Under AddressSanitizer a double release or a leak fails this.
TEST(XMLElement, SharedChildrenLiveAsLongAsAnyHolderAndRemovalTakesEveryOccurrence)
{
    ElementPtr root = element("a"), x = element("x"), other = element("other");
    for (ElementPtr const& child : {x, element("x"), x})
        root->AddElement(child);
    other->AddElement(x);
    x->AddElement(element("c"));
    x->Text("x's");
    root->RemoveElement(x);
    EXPECT_EQ("<a><x/></a>", write(root));
    // The argument may be the very pointer stored in the list being erased.
    root->RemoveElement(*root->elementBegin());
    EXPECT_EQ("<a/>", write(root));
    ElementPtr kept = *x->elementBegin();
    x = ElementPtr();
    EXPECT_EQ("<other><x><c/></x></other>", write(other));
    other = ElementPtr();
    EXPECT_EQ("<c/>", write(kept));
}

TEST(XMLWriter, WritesOneLineTextOnlyWithoutChildrenAndEscapesNothing)
{
    EXPECT_EQ("", write(ElementPtr()));
    ElementPtr e = element("a");
    e->Attribute("q", "say \"hi\" & <bye>");
    e->Text("1 < 2 && 3 > 2 &amp; 'x'\n\t");
    EXPECT_EQ("<a q=\"say \"hi\" & <bye>\">1 < 2 && 3 > 2 &amp; 'x'\n\t</a>", write(e));
}

void expectWritten(std::initializer_list<std::pair<std::string, char const*>> cases)
{
    for (auto const& c : cases)
        EXPECT_EQ(c.second, write(parse(c.first))) << c.first;
}

TEST(XMLParser, DocumentsGiveTheTreeTheyDescribe)
{
    expectWritten({
        {"<AllBoards version=\"2\"><PCI/><Other x='1'/></AllBoards>",
         "<AllBoards version=\"2\"><PCI/><Other x=\"1\"/></AllBoards>"},
        // Entity references stay as written.
        {"<a v=\"&quot;x&lt;\">R&amp;D &#47;</a>", "<a v=\"&quot;x&lt;\">R&amp;D &#47;</a>"},
        // Attributes in name order; the last duplicate wins.
        {"<P VendorID=\"0E11\" Bus=\"02\" k=\"1\" Name=\"A B/C>\" k=\"2\"></P>",
         "<P Bus=\"02\" Name=\"A B/C>\" VendorID=\"0E11\" k=\"2\"/>"},
        // Empty-element tags too take the text that follows them.
        {"\n\t <a \n x=\"1\"\t>\n <b\n/> \n</a >\n", "<a x=\"1\"><b> \n</b></a>"},
        // End-tag names are not compared.
        {"<a><b></x></y>", "<a><b/></a>"},
        // A second top-level empty element becomes a child of the first; a
        // second one with an end tag stays current and is what the root gets.
        {"<a><x/></a><b/>", "<a><x/><b/></a>"},
        {"<a><x/></a><b><y/></b>", "<b><y/></b>"},
        // An empty-element tag never becomes the current element: a document that
        // is one (the inventory of a machine without storage) reads back empty.
        {"<AllStorage PCIDeviceCount=\"0\"/>", kEmptyRoot},
        // The value lies between the character after '=' and the last one.
        {"<a b c=d =\"e\" f=></a>", "<a =\"e\" b=\"\" c=\"\" f=\"\"/>"},
        // A single quote inside a double-quoted value opens the single-quote
        // state, which runs on to the end: such values do not round-trip.
        {"<a n=\"it's\" m='x'></a>", "<a n=\"it's\" m='x'></a\"/>"},
        {"<a n=\"say 'hi'\" m=\"1\"/>", kEmptyRoot},
    });
}

TEST(XMLParser, TheDeclarationCommentsAndCDataMarkersAreRemovedFirst)
{
    expectWritten({
        {"<?xml version=\"1.0\"?>\n<!-- names -->\n<a><!-- a --><b/></a>\n<!-- end -->",
         "<a><b/></a>"},
        {"<a>is it?><b></b></a>", "<b/>"}, // everything up to the first "?>" goes
        {"<?xml version=\"1.0\"?><?xml version=\"1.0\"?><a/>",
         "<?xml version=\"1.0\"\"><a/></?xml>"},
        {"<!-- x?> --><r></r>", kEmptyRoot}, // a "?>" in a comment cuts the comment's start away
        {"<name>Stratum <!-- not\n<b/> -->Array</name>", "<name>Stratum Array</name>"},
        {"<a>x<!-->y</a>", "<a>xy</a>"}, // the end is searched from the start of "<!--"
        {"<a>x<!-<!-- inner -->- outer -->y</a>", "<a>xy</a>"}, // formed by a removal: removed
        {"<a><b/><!-- never closed <c/></a>", "<a><b/></a>"},
        // Only the CDATA markers go: markup inside is parsed as markup.
        {"<a><![CDATA[<b/>]]></a>", "<a><b/></a>"},
        {"<a>x<![CDATA[y]]>z]]></a>", "<a>xyz</a>"},
        {"<a>x]]]]>>y</a>", "<a>xy</a>"}, // formed by a removal: removed too ...
        // ... except an opening one formed by removing a closing one.
        {"<a v=\"x<![CDA]]>TA[y\"></a>", "<a v=\"x<![CDATA[y\"/>"},
        // Comments go first; one formed by removing a marker stays.
        {"<a>x<![CDATA[<!-- ]]>-->y</a>", "<a>xy</a>"},
        {"<a v=\"x<!-<![CDATA[- c -->y\"></a>", "<a v=\"x<!-- c -->y\"/>"},
    });
}

TEST(XMLParser, AMalformedTextGivesTheTreeBuiltUntilTheParseStops)
{
    expectWritten({
        {"", kEmptyRoot},
        {"hello <a></a>", kEmptyRoot},
        // Text after a child element is never consumed: the parse stops there.
        {"<a><b></b>hi<c/><d></d></a>", "<a><b/></a>"},
        // A ">" right after the tag's ">" marks it self-closing.
        {"<r><a>>x</a><b/></r>", "<r><a>x</a><b/></r>"},
        // Unclosed elements: the element current at the end is the root.
        {"<a><b><c/>", "<b><c/></b>"},
        {"</x></y><a><b/></a></a></z>", "<a><b/></a>"},
        {"<!-", "<!-/>"},
        // Truncated tags ("/" without ">" is not an empty-element tag).
        {"<a><b/", "<b/>"},
        {"<a><b x=", "<b x=\"\"/>"},
        {"< a></a>", kEmptyRoot},
        {"<a><b></b><", "<a><b/></a>"},
        // An unclosed quote runs to the end; its last character closes it.
        {"<a x=\"1><b></b></a>", "<a x=\"1><b></b></a\"/>"},
        {"<?xml version=\"1.0\"", "<?xml version=\"1.0\"/>"},
        {"<![CDATA[<a></a>", "<a/>"},
    });
    // A NUL is an ordinary character.
    EXPECT_EQ(std::string("x\0y", 3), text(parse(std::string("<a>x\0y</a>", 10))->text()));

    std::string const document = "<?xml version=\"1.0\"?><!-- c --><AllStorage n=\"1\">\n"
                                 "  <PCIDevice Index=\"0\" Name='Array'>\n"
                                 "    <BlockDevice Node=\"/dev/sda\"/><![CDATA[x]]>\n"
                                 "  </PCIDevice>\n</AllStorage>\n";
    for (size_t n = 0; n <= document.size(); ++n)
    {
        write(parse(document.substr(0, n)));
        write(parse(document.substr(n)));
    }
}

TEST(XMLParser, ParsingEmptiesTheRootFirstAndLeavesTakenChildrenIntact)
{
    ElementPtr root = element("old");
    root->Text("old text");
    root->Attribute("stale", "1");
    root->AddElement(element("gone"));
    Common::XML::Parser().XML("<new a=\"1\"><b><c/></b></new>", root);
    EXPECT_EQ("<new a=\"1\"><b><c/></b></new>", write(root));
    ElementPtr b = *root->elementBegin();
    Common::XML::Parser().XML("no tags <?xml?>", root);
    EXPECT_EQ(kEmptyRoot, write(root));
    EXPECT_EQ("<b><c/></b>", write(b));
    Common::XML::Parser().XML("<a/>", ElementPtr()); // a null root is left alone
}

// A name unique to i, in an order scrambled against i.
std::string scrambled(unsigned i)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "n%08X", i * 2654435761u);
    return buffer;
}

// Nesting deeper than a per-level recursion's stack would take, and sizes on
// which quadratic parsing or writing would not finish within the time limit,
// on a thread whose whole stack is 512 KiB.
TEST(XMLScale, ADocumentOf150000ElementsAndLargeTextsAreReadInOnePassWithoutADeepStack)
{
    auto work = [](void*) -> void*
    {
        std::string doc = "<AllBoards><PCI>", open, close;
        for (unsigned i = 0; i < 100000; ++i)
            open += "<d>", close += "</d>";
        for (unsigned i = 0; i < 24999; ++i) // 50,000 wide, with AllBoards and PCI
            doc += "<dev id=\"" + scrambled(i) + "\"><name>Board " + std::to_string(i) +
                   "</name></dev>";
        doc += open + "core" + close + "</PCI></AllBoards>";
        EXPECT_EQ(doc, write(parse(doc)));

        std::string big(4u << 20, 'x');
        ElementPtr root = parse("<?xml version=\"1.0\"?><!--" + big + "--><a><!--" + big + "-->" +
                                big + "<![CDATA[" + big + "]]></a>");
        EXPECT_EQ(2 * big.size(), root->text().size());
        return nullptr;
    };
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, 512u << 10));
    pthread_t thread;
    ASSERT_EQ(0, pthread_create(&thread, &attributes, work, nullptr));
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

// The sanitizers' checks cost time and memory: 50,000 there.
#ifdef __SANITIZE_ADDRESS__
unsigned const WideElementAttributes = 50000;
#else
unsigned const WideElementAttributes = 200000;
#endif

TEST(XMLScale, OneElementOf200000AttributesIsWrittenBackInNameOrder)
{
    std::string doc = "<names", written = "<names";
    std::map<std::string, std::string> last; // by name, in byte order
    // Every 1000th name comes again with a new value.
    for (unsigned i = 0; i < 2 * WideElementAttributes; i += i < WideElementAttributes ? 1 : 1000)
    {
        std::string const name = scrambled(i % WideElementAttributes), value = std::to_string(i);
        doc += " " + name + "=\"" + value + "\"";
        last[name] = value;
    }
    for (auto const& attribute : last)
        written += " " + attribute.first + "=\"" + attribute.second + "\"";
    std::string const got = write(parse(doc + "></names>"));
    EXPECT_TRUE(written + "/>" == got) << "not printed: 5 MB"; // compared whole
}

} // namespace
