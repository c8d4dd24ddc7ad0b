// Parser::xml: one line, attributes in name order, text only when
// there are no children, empty-element tags, no escaping.
#include "XMLTestSupport.h"

#include <gtest/gtest.h>

using namespace XMLTest;

namespace
{

TEST(XMLWriter, ElementWithoutTextOrChildrenIsAnEmptyElementTag)
{
    EXPECT_EQ("<a/>", write(element("a")));
    ElementPtr e = element("AllStorage");
    e->Attribute("PCIDeviceCount", "0");
    EXPECT_EQ("<AllStorage PCIDeviceCount=\"0\"/>", write(e));
}

TEST(XMLWriter, ElementWithTextIsWrittenWithStartAndEndTag)
{
    ElementPtr e = element("a");
    e->Text("hi");
    EXPECT_EQ("<a>hi</a>", write(e));
}

TEST(XMLWriter, ElementWithTextAndChildrenIsWrittenWithoutItsText)
{
    ElementPtr e = element("a");
    e->Text("dropped");
    ElementPtr b = element("b");
    b->Text("kept");
    e->AddElement(b);
    EXPECT_EQ("<a><b>kept</b></a>", write(e));
}

TEST(XMLWriter, AttributesAreWrittenInNameOrderWhateverTheOrderSet)
{
    ElementPtr e = element("BlockDevice");
    e->Attribute("Size", "73407865856");
    e->Attribute("Removable", "0");
    e->Attribute("Index", "0");
    e->Attribute("DriveNumber", "1");
    e->Attribute("DeviceNode", "/dev/cciss/c0d0");
    EXPECT_EQ("<BlockDevice DeviceNode=\"/dev/cciss/c0d0\" DriveNumber=\"1\" Index=\"0\" "
              "Removable=\"0\" Size=\"73407865856\"/>",
              write(e));
}

TEST(XMLWriter, AttributesComeBeforeTheTextAndTheChildren)
{
    ElementPtr e = element("dev");
    e->Attribute("id", "80860000");
    ElementPtr name = element("name");
    name->Text("Intel");
    e->AddElement(name);
    EXPECT_EQ("<dev id=\"80860000\"><name>Intel</name></dev>", write(e));
    ElementPtr t = element("t");
    t->Attribute("k", "v");
    t->Text("x");
    EXPECT_EQ("<t k=\"v\">x</t>", write(t));
}

TEST(XMLWriter, NothingIsEscaped)
{
    ElementPtr e = element("a");
    e->Attribute("q", "say \"hi\" & <bye>");
    e->Text("1 < 2 && 3 > 2 &amp; 'x'");
    EXPECT_EQ("<a q=\"say \"hi\" & <bye>\">1 < 2 && 3 > 2 &amp; 'x'</a>", write(e));
}

TEST(XMLWriter, NoDeclarationNoLineBreaksNoIndentation)
{
    ElementPtr root = element("AllBoards");
    ElementPtr pci = element("PCI");
    root->AddElement(pci);
    for (int i = 0; i < 3; ++i)
    {
        ElementPtr dev = element("dev");
        dev->Attribute("id", "0");
        pci->AddElement(dev);
    }
    EXPECT_EQ("<AllBoards><PCI><dev id=\"0\"/><dev id=\"0\"/><dev id=\"0\"/></PCI></AllBoards>",
              write(root));
}

TEST(XMLWriter, TextIsWrittenExactlyAsHeld)
{
    ElementPtr e = element("a");
    e->Text("  leading and trailing \n\t");
    EXPECT_EQ("<a>  leading and trailing \n\t</a>", write(e));
}

TEST(XMLWriter, EmptyTagAndEmptyAttributeNamesAreWrittenAsTheyAre)
{
    ElementPtr e = element("");
    e->Attribute("", "v");
    EXPECT_EQ("< =\"v\"/>", write(e));
}

TEST(XMLWriter, ANullElementGivesEmptyText)
{
    EXPECT_EQ("", write(ElementPtr()));
}

TEST(XMLWriter, WritingDoesNotChangeTheTree)
{
    ElementPtr e = element("a");
    e->Attribute("z", "1");
    e->Attribute("a", "2");
    e->AddElement(element("b"));
    std::string first = write(e);
    EXPECT_EQ(first, write(e));
    EXPECT_EQ("a=2,z=1", attributes(e));
    EXPECT_EQ("b", childTags(e));
}

} // namespace
