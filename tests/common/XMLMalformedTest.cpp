// Malformed input: every text
// parses to some tree, in finite time, without reading outside the text (the
// sanitized build checks that), and the tree can be written and released.
#include "XMLTestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

using namespace XMLTest;

namespace
{

// Parses, writes and releases; returns what was written.
std::string survive(std::string const& text)
{
    // Built with an exact length, so a read past the end is a heap overflow
    // that AddressSanitizer reports (the terminating NUL is not relied on).
    Common::string input(text.data(), static_cast<unsigned>(text.size()));
    ElementPtr root = parse(input);
    return write(root);
}

TEST(XMLMalformed, EmptyAndTagFreeTextsLeaveTheRootEmpty)
{
    EXPECT_TRUE(isEmptyRoot(parse("")));
    EXPECT_TRUE(isEmptyRoot(parse(" \r\n\t ")));
    EXPECT_TRUE(isEmptyRoot(parse("just some words")));
    EXPECT_EQ("</>", survive("")); // an empty root is written as "<" "" "/>"
}

TEST(XMLMalformed, MixedContentStopsWhereATagIsExpected)
{
    // Text after a child element, where a tag is expected, is never
    // consumed: the parse stops there and keeps the tree built so far.
    ElementPtr root = parse("<a><b></b>hi</a>");
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ("b", childTags(root));
    EXPECT_EQ("<a><b/></a>", write(root));

    root = parse("<a><b></b>hi<c/><d></d></a>");
    EXPECT_EQ("b", childTags(root)); // nothing after "hi" is read
}

TEST(XMLMalformed, TextAfterAnEmptyElementTagIsThatElementsText)
{
    // After an empty-element tag, step 4 reads text as for any start tag.
    ElementPtr root = parse("<a><b/>hi</a>");
    EXPECT_EQ("b", childTags(root));
    EXPECT_EQ("hi", str(child(root, 0)->text()));
    EXPECT_EQ("<a><b>hi</b></a>", write(root));
}

TEST(XMLMalformed, ATextBeginningWithGreaterThanMakesTheTagAnEmptyElementTag)
{
    // Step 2: a ">" right after the tag's ">" marks it self-closing; the
    // text is read after it, and the end tag then closes the parent (which
    // stays current, so b is still appended to it).
    ElementPtr root = parse("<r><a>>x</a><b/></r>");
    EXPECT_EQ("r", str(root->tag()));
    EXPECT_EQ("a,b", childTags(root));
    EXPECT_EQ("x", str(child(root, 0)->text()));
    EXPECT_TRUE(isEmptyRoot(parse("<a>>x</a>")));
}

TEST(XMLMalformed, TextBeforeTheFirstTagStopsTheParseAtOnce)
{
    EXPECT_TRUE(isEmptyRoot(parse("hello <a></a>")));
}

TEST(XMLMalformed, UnclosedElementsAreLeftOpen)
{
    // The element current at the end is the one the root receives.
    ElementPtr root = parse("<a><b></b>");
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ("b", childTags(root));

    root = parse("<a><b><c/>");
    EXPECT_EQ("b", str(root->tag()));
    EXPECT_EQ("c", childTags(root));

    root = parse("<a>text");
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ("text", str(root->text()));
}

TEST(XMLMalformed, StrayEndTagsAreIgnoredWhenNothingIsOpen)
{
    ElementPtr root = parse("</x></y><a><b/></a></a></z>");
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ("b", childTags(root));

    root = parse("<a></b></c><d/></a>");
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ("d", childTags(root));

    EXPECT_TRUE(isEmptyRoot(parse("</a>")));
    EXPECT_TRUE(isEmptyRoot(parse("</>")));
}

TEST(XMLMalformed, EndTagsWithAttributesOrAnExtraGreaterThan)
{
    ElementPtr root = parse("<a><b></b x=\"1\"></a>>");
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ("b", childTags(root));
}

TEST(XMLMalformed, AnUnterminatedCommentCutsTheRest)
{
    ElementPtr root = parse("<a><b></b><!-- open <c></c></a>");
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ("b", childTags(root));
    EXPECT_TRUE(isEmptyRoot(parse("<!--")));
    EXPECT_EQ("!-", str(parse("<!-")->tag())); // no comment: a start tag named "!-"
}

TEST(XMLMalformed, TruncatedTags)
{
    ElementPtr root = parse("<a><b");
    EXPECT_EQ("b", str(root->tag()));
    EXPECT_EQ("b", str(parse("<a><b ")->tag()));
    EXPECT_EQ("b", str(parse("<a><b/")->tag())); // "/" without ">" is not an empty-element tag
    root = parse("<a></a");
    EXPECT_EQ("a", str(root->tag()));
    root = parse("<a><b x=");
    EXPECT_EQ("x=", attributes(root));
}

TEST(XMLMalformed, ALoneLessThanSign)
{
    EXPECT_TRUE(isEmptyRoot(parse("<")));
    EXPECT_TRUE(isEmptyRoot(parse("  <  ")));
    EXPECT_TRUE(isEmptyRoot(parse("<>")));
    EXPECT_TRUE(isEmptyRoot(parse("< a></a>")));
    // After a good start: stops, keeps what was built.
    ElementPtr root = parse("<a><");
    EXPECT_EQ("a", str(root->tag()));
    root = parse("<a><b></b><");
    EXPECT_EQ("b", childTags(root));
}

TEST(XMLMalformed, AttributeWithAnUnclosedQuoteRunsToTheEnd)
{
    ElementPtr root = parse("<a x=\"1><b></b></a>");
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ("x=1><b></b></a", attributes(root));
    EXPECT_EQ("", childTags(root));

    root = parse("<a x='1");
    EXPECT_EQ("x=", attributes(root)); // the last character counts as the closing quote
    root = parse("<a x=\"");
    EXPECT_EQ("x=", attributes(root));
}

TEST(XMLMalformed, OddAttributes)
{
    ElementPtr root = parse("<a b c=d =\"e\" f=></a>");
    EXPECT_EQ("=e,b=,c=,f=", attributes(root));
}

TEST(XMLMalformed, LoneMarkersAndBrokenDeclarations)
{
    EXPECT_TRUE(isEmptyRoot(parse("?>")));
    // No "?>": the declaration stays and reads as an element named "?xml".
    EXPECT_EQ("?xml", str(parse("<?xml version=\"1.0\"")->tag()));
    EXPECT_TRUE(isEmptyRoot(parse("]]>")));
    EXPECT_TRUE(isEmptyRoot(parse("<![CDATA[")));
    EXPECT_EQ("a", str(parse("<![CDATA[<a></a>")->tag()));
}

TEST(XMLMalformed, EmbeddedNulBytesAreOrdinaryCharacters)
{
    std::string text("<a>x\0y</a>", 10);
    Common::string input(text.data(), static_cast<unsigned>(text.size()));
    ElementPtr root = parse(input);
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ(std::string("x\0y", 3), str(root->text()));
}

TEST(XMLMalformed, EveryPrefixOfADocumentTerminates)
{
    const std::string document =
        "<?xml version=\"1.0\"?><!-- c --><AllStorage PCIDeviceCount=\"1\">\n"
        "  <PCIDevice Index=\"0\" Name='Smart Array'>\n"
        "    <BlockDevice DeviceNode=\"/dev/sda\" Size=\"512\"/>\n"
        "    <![CDATA[x]]>\n"
        "  </PCIDevice>\n"
        "</AllStorage>\n";
    for (size_t n = 0; n <= document.size(); ++n)
        survive(document.substr(0, n));
    for (size_t n = 0; n <= document.size(); ++n)
        survive(document.substr(n));
    SUCCEED();
}

TEST(XMLMalformed, RandomMarkupTerminates)
{
    static const char* const pieces[] = {
        "<",   ">",  "/",     "</",    "/>",          "<a",   "<b>",  "</a>", "</b>", "=",
        "\"",  "'",  " ",     "\n",    "x",           "id",   "<!--", "-->",  "-",    "<![CDATA[",
        "]]>", "?>", "<?xml", "&amp;", "<a x=\"1\">", "<c/>", "\t",   "!",    "?"};
    const unsigned count = sizeof pieces / sizeof pieces[0];
    std::mt19937 random(20240601);
    for (int round = 0; round < 3000; ++round)
    {
        std::string text;
        unsigned n = std::uniform_int_distribution<unsigned>(0, 40)(random);
        for (unsigned i = 0; i < n; ++i)
            text += pieces[std::uniform_int_distribution<unsigned>(0, count - 1)(random)];
        survive(text);
    }
    SUCCEED();
}

TEST(XMLMalformed, RandomBytesTerminate)
{
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round)
    {
        std::string text;
        unsigned n = std::uniform_int_distribution<unsigned>(0, 64)(random);
        for (unsigned i = 0; i < n; ++i)
            text += static_cast<char>(std::uniform_int_distribution<int>(0, 255)(random));
        survive(text);
    }
    SUCCEED();
}

} // namespace
