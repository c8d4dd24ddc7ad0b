// Parser::xml: one line, attributes in name order, text only when
// there are no children, empty-element tags, no escaping.
#include "XMLTestSupport.h"

#include <gtest/gtest.h>

using namespace XMLTest;

namespace
{

TEST(XMLWriter, OneLineAttributesInNameOrderThenTextOrChildren)
{
    EXPECT_EQ("<a/>", write(element("a")));
    EXPECT_EQ("", write(ElementPtr()));

    ElementPtr e = element("BlockDevice");
    for (char const* name : {"Size", "Removable", "Index", "DeviceNode"})
        e->Attribute(name, "0");
    EXPECT_EQ("<BlockDevice DeviceNode=\"0\" Index=\"0\" Removable=\"0\" Size=\"0\"/>", write(e));
    e->Text("  leading and trailing \n\t");
    EXPECT_EQ("<BlockDevice DeviceNode=\"0\" Index=\"0\" Removable=\"0\" Size=\"0\">"
              "  leading and trailing \n\t</BlockDevice>",
              write(e));

    // With children, the text is not written.
    ElementPtr root = element("dev");
    root->Text("dropped");
    root->Attribute("id", "1");
    root->AddElement(element("b"));
    root->AddElement(e);
    std::string once = write(root);
    EXPECT_EQ("<dev id=\"1\"><b/><BlockDevice DeviceNode=\"0\" Index=\"0\" Removable=\"0\" "
              "Size=\"0\">  leading and trailing \n\t</BlockDevice></dev>",
              once);
    EXPECT_EQ(once, write(root)); // writing changes nothing
}

TEST(XMLWriter, NothingIsEscapedAndEmptyNamesAreWrittenAsTheyAre)
{
    ElementPtr e = element("a");
    e->Attribute("q", "say \"hi\" & <bye>");
    e->Text("1 < 2 && 3 > 2 &amp; 'x'");
    EXPECT_EQ("<a q=\"say \"hi\" & <bye>\">1 < 2 && 3 > 2 &amp; 'x'</a>", write(e));
    e = element("");
    e->Attribute("", "v");
    EXPECT_EQ("< =\"v\"/>", write(e));
}

} // namespace
