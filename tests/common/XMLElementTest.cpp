// Common::XML::Element: fields, attributes in name order, the
// children, the "null" placeholder and removal by identity.
#include "XMLTestSupport.h"

#include <gtest/gtest.h>

using namespace XMLTest;

namespace
{

TEST(XMLElementAttributes, SetReplaceRemoveAndIterateInAscendingNameOrder)
{
    ElementPtr e = element("PCIDevice");
    for (char const* name : {"VendorID", "Bus", "Name", "BootOrder", "Index", "b", "Bu"})
        e->Attribute(name, "0");
    e->Attribute("Index", "7"); // replaces
    e->Attribute("Name", "");   // an empty value is still present
    EXPECT_TRUE(e->hasAttribute("Name"));
    EXPECT_FALSE(e->hasAttribute("name")); // names are case-sensitive
    EXPECT_EQ("", str(e->attribute("name")));
    // strcmp order: upper case before lower case, shorter prefix first.
    EXPECT_EQ("BootOrder=0,Bu=0,Bus=0,Index=7,Name=,VendorID=0,b=0", attributes(e));
    e->RemoveAttribute("Bus");
    e->RemoveAttribute("missing"); // absent: nothing happens
    EXPECT_EQ("BootOrder=0,Bu=0,Index=7,Name=,VendorID=0,b=0", attributes(e));
}

TEST(XMLElementAttributes, NamesThatDifferOnlyAfterANulByteAreDistinct)
{
    ElementPtr e = element("dev");
    const Common::string second("id\0b", 4);
    const Common::string first("id\0a", 4);
    e->Attribute(second, "2");
    e->Attribute(first, "1");
    e->Attribute("id", "0");
    EXPECT_EQ("0", str(e->attribute("id")));
    EXPECT_EQ("1", str(e->attribute(first)));
    EXPECT_EQ("2", str(e->attribute(second)));
    e->RemoveAttribute(first);
    EXPECT_FALSE(e->hasAttribute(first));
    EXPECT_TRUE(e->hasAttribute(second));
    EXPECT_EQ("id=0," + str(second) + "=2", attributes(e));
}

TEST(XMLElementChildren, AppendedInOrderSharedNotCopiedAndFoundByExactTag)
{
    ElementPtr root = element("AllBoards");
    ElementPtr first = element("PCI");
    root->AddElement(element("pci"));
    root->AddElement(first);
    root->AddElement(element("PCI"));
    first->Text("changed after adding");
    EXPECT_EQ("pci,PCI,PCI", childTags(root));
    EXPECT_EQ(first.get(), root->getElement("PCI").get());
    EXPECT_EQ("changed after adding", str(child(root, 1)->text()));
    EXPECT_TRUE(root->hasElement("pci"));
    EXPECT_FALSE(root->hasElement("Pci"));

    // A child really tagged "null" is found like any other.
    ElementPtr real = element("null");
    root->AddElement(real);
    EXPECT_EQ(real.get(), root->getElement("null").get());
}

TEST(XMLElementPlaceholder, AMissingTagGivesANewDetachedNullElement)
{
    ElementPtr root = element("AllBoards");
    root->AddElement(element("PCI"));
    EXPECT_FALSE(root->hasElement("Missing"));
    ElementPtr missing = root->getElement("Missing");
    ASSERT_NE(nullptr, missing.get());
    EXPECT_EQ("<null/>", write(missing));
    EXPECT_NE(missing.get(), root->getElement("Missing").get());
    // Not attached: changing it changes nothing in the tree.
    missing->Attribute("value", "x");
    missing->AddElement(element("child"));
    EXPECT_EQ("<AllBoards><PCI/></AllBoards>", write(root));
    // A placeholder's placeholder too.
    EXPECT_EQ("null", str(root->getElement("a")->getElement("b")->tag()));
    EXPECT_EQ("", str(root->getElement("a")->attribute("value")));
}

TEST(XMLElementIdentity, RemoveElementRemovesEveryOccurrenceOfThatObjectOnly)
{
    ElementPtr root = element("a");
    ElementPtr x = element("x");
    x->Attribute("Index", "0");
    ElementPtr copy = element("x");
    copy->Attribute("Index", "0");
    root->AddElement(x);
    root->AddElement(copy);
    root->AddElement(x);
    x->AddElement(element("c"));
    root->RemoveElement(x);
    ASSERT_EQ(1u, childCount(root));
    EXPECT_EQ(copy.get(), child(root, 0).get());
    EXPECT_EQ("<x Index=\"0\"><c/></x>", write(x)); // alive for other holders

    // The argument may be the very pointer stored in the list being erased.
    root->RemoveElement(*root->elementBegin());
    EXPECT_TRUE(root->elementBegin() == root->elementEnd());
}

// Under AddressSanitizer a double release or a leak fails these.
TEST(XMLElementLifetime, SharedSubtreesLiveAsLongAsAnyHolderAndAreReleasedOnce)
{
    ElementPtr shared = element("shared");
    shared->AddElement(element("leaf"));
    {
        ElementPtr first = element("first");
        ElementPtr second = element("second");
        first->AddElement(shared);
        second->AddElement(shared);
        second->AddElement(shared);
        shared = ElementPtr(); // only the two parents hold it now
        first = ElementPtr();
        EXPECT_EQ("<second><shared><leaf/></shared><shared><leaf/></shared></second>",
                  write(second));
    }

    ElementPtr kept;
    {
        ElementPtr root = element("a");
        ElementPtr b = element("b");
        ElementPtr c = element("c");
        c->AddElement(element("d"));
        b->AddElement(c);
        root->AddElement(b);
        kept = c;
    }
    EXPECT_EQ("<c><d/></c>", write(kept));
}

TEST(XMLElementLifetime, NullChildrenAreSkippedBySearchesAndTheWriter)
{
    ElementPtr root = element("a");
    root->AddElement(ElementPtr());
    root->AddElement(element("b"));
    EXPECT_TRUE(root->hasElement("b"));
    EXPECT_FALSE(root->hasElement(""));
    EXPECT_EQ("<a><b/></a>", write(root));
}

} // namespace
