// Common::XML::Element and the writer: attributes in name order, children,
// the "null" placeholder, removal by identity, shared subtrees.
#include "XMLTestSupport.h"

#include <gtest/gtest.h>

using namespace XMLTest;

namespace
{

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

TEST(XMLElement, RemoveElementRemovesEveryOccurrenceOfThatObjectOnly)
{
    ElementPtr root = element("a");
    ElementPtr x = element("x");
    root->AddElement(x);
    root->AddElement(element("x"));
    root->AddElement(x);
    x->AddElement(element("c"));
    x->Text("x's");
    root->RemoveElement(x);
    EXPECT_EQ("<a><x/></a>", write(root));
    EXPECT_EQ("<x><c/></x>", write(x)); // alive for other holders
    // The argument may be the very pointer stored in the list being erased.
    root->RemoveElement(*root->elementBegin());
    EXPECT_EQ("<a/>", write(root));
}

// Under AddressSanitizer a double release or a leak fails this.
TEST(XMLElement, SharedSubtreesLiveAsLongAsAnyHolderAndAreReleasedOnce)
{
    ElementPtr shared = element("shared");
    shared->AddElement(element("leaf"));
    ElementPtr first = element("first"), second = element("second");
    first->AddElement(shared);
    second->AddElement(shared);
    second->AddElement(shared);
    shared = first = ElementPtr();
    EXPECT_EQ("<second><shared><leaf/></shared><shared><leaf/></shared></second>", write(second));
    ElementPtr kept = *(*second->elementBegin())->elementBegin();
    second = ElementPtr();
    EXPECT_EQ("<leaf/>", write(kept));
}

TEST(XMLWriter, WritesOneLineTextOnlyWithoutChildrenAndEscapesNothing)
{
    EXPECT_EQ("", write(ElementPtr()));
    ElementPtr e = element("a");
    e->Attribute("q", "say \"hi\" & <bye>");
    e->Text("1 < 2 && 3 > 2 &amp; 'x'\n\t");
    EXPECT_EQ("<a q=\"say \"hi\" & <bye>\">1 < 2 && 3 > 2 &amp; 'x'\n\t</a>", write(e));
    e->AddElement(element(""));
    (*e->elementBegin())->Attribute("", "v");
    EXPECT_EQ("<a q=\"say \"hi\" & <bye>\">< =\"v\"/></a>", write(e));
}

} // namespace
