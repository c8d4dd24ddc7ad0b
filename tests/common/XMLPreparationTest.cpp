// The preparation steps of Parser::XML: the declaration, comments
// and CDATA markers are removed before parsing.
#include "XMLTestSupport.h"

#include <gtest/gtest.h>

using namespace XMLTest;

namespace
{

TEST(XMLDeclaration, ADeclarationAndCommentsParseAsIfAbsent)
{
    const char* plain = "<AllBoards><PCI><dev id=\"1\"><name>n</name></dev></PCI></AllBoards>";
    const char* decorated = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                            "<!-- names database -->\n"
                            "<AllBoards><!-- a --><PCI><dev id=\"1\"><!--b--><name>n</name>"
                            "</dev></PCI><!-- c --></AllBoards>\n<!-- trailing -->";
    EXPECT_EQ(write(parse(plain)), write(parse(decorated)));
    EXPECT_EQ(plain, write(parse(decorated)));
}

TEST(XMLDeclaration, EverythingUpToTheFirstQuestionMarkGreaterThanIsDropped)
{
    // Whatever ends with the first "?>" goes: a declaration or another
    // processing instruction, and anything before it.
    ElementPtr root = parse("<?xml-stylesheet href=\"s.xsl\"?>\n<a></a>");
    EXPECT_EQ("a", str(root->tag()));
    root = parse("junk <b/> and more ?><a></a>");
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ("", childTags(root));
    // Only up to the first "?>": a second one (a declaration after a
    // processing instruction, say) then reads as an element named "?xml"
    // (with a mangled attribute) that holds the rest.
    root = parse("<?xml version=\"1.0\"?><?xml version=\"1.0\"?><a/>");
    EXPECT_EQ("?xml", str(root->tag()));
    EXPECT_EQ("a", childTags(root));
}

TEST(XMLDeclaration, QuestionMarkGreaterThanInsideTheDocumentAlsoCuts)
{
    // No declaration: the first "?>" anywhere still cuts the text before it.
    ElementPtr root = parse("<a>is it?><b></b></a>");
    EXPECT_EQ("b", str(root->tag()));
}

TEST(XMLDeclaration, OnlyADeclarationLeavesTheRootEmpty)
{
    EXPECT_TRUE(isEmptyRoot(parse("<?xml version=\"1.0\"?>")));
    EXPECT_TRUE(isEmptyRoot(parse("<?xml version=\"1.0\"?>\n\n")));
}

TEST(XMLComments, CommentsAreRemovedInsideCharacterData)
{
    ElementPtr root = parse("<name>Smart <!-- not this -->Array</name>");
    EXPECT_EQ("Smart Array", str(root->text()));
}

TEST(XMLComments, CommentsMayHoldMarkupAndSpanLines)
{
    ElementPtr root = parse("<a><!--\n<b x=\"1\"/>\n<c>\n--><d/></a>");
    EXPECT_EQ("d", childTags(root));
}

TEST(XMLComments, AdjacentCommentsAndDashes)
{
    EXPECT_EQ("<a>xy</a>", write(parse("<a>x<!--1--><!--2-->y</a>")));
    EXPECT_EQ("<a>x-y</a>", write(parse("<a>x-<!-- - -- --->y</a>")));
}

TEST(XMLComments, TheEndIsSearchedFromTheStartOfTheComment)
{
    // "<!-->" and "<!--->" are whole comments: "-->" overlaps the "<!--".
    EXPECT_EQ("<a>xy</a>", write(parse("<a>x<!-->y</a>")));
    EXPECT_EQ("<a>xy</a>", write(parse("<a>x<!--->y</a>")));
}

TEST(XMLComments, ACommentFormedByRemovingAnotherIsRemovedToo)
{
    // Removing the inner comment joins "<!-" and "- x -->" into a new one.
    EXPECT_EQ("<a>xy</a>", write(parse("<a>x<!-<!-- inner -->- outer -->y</a>")));
    EXPECT_EQ("<a>xy</a>", write(parse("<a>x<<!---->!-- outer -->y</a>")));
}

TEST(XMLComments, AnUnterminatedCommentRemovesTheRestOfTheText)
{
    ElementPtr root = parse("<a><b/><!-- never closed <c/></a>");
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ("b", childTags(root));
    EXPECT_TRUE(isEmptyRoot(parse("<!-- everything <a/>")));
    EXPECT_EQ("<a>x</a>", write(parse("<a>x<!--")));
    // After a complete comment, a later unterminated one still cuts.
    EXPECT_EQ("<a>xy</a>", write(parse("<a>x<!-- ok -->y<!-- open </a>")));
}

TEST(XMLComments, CommentsRemovedAfterTheDeclaration)
{
    // The declaration goes first, so a comment before it goes with it.
    ElementPtr root = parse("<!-- a --><?xml version=\"1.0\"?><!-- b --><r></r>");
    EXPECT_EQ("r", str(root->tag()));
    // A "?>" inside a comment cuts the comment's start away first.
    root = parse("<!-- x?> --><r></r>");
    EXPECT_TRUE(isEmptyRoot(root)); // " --><r></r>": no tag where one is expected
}

TEST(XMLCData, CDataMarkersAreRemovedLeavingTheContentAsText)
{
    ElementPtr root = parse("<name><![CDATA[Ethernet Pro 100]]></name>");
    EXPECT_EQ("Ethernet Pro 100", str(root->text()));
}

TEST(XMLCData, MarkupInsideCDataIsParsedAsMarkup)
{
    // Only the markers go: a "<" inside the section ends the text as usual.
    ElementPtr root = parse("<a><![CDATA[<b/>]]></a>");
    EXPECT_EQ("b", childTags(root));
}

TEST(XMLCData, EveryMarkerGoesAlsoUnbalancedOnes)
{
    EXPECT_EQ("<a>xyz</a>", write(parse("<a>x<![CDATA[y]]>z]]></a>")));
    EXPECT_EQ("<a>xyz</a>", write(parse("<a><![CDATA[x<![CDATA[yz</a>")));
    // A marker formed by removing another is removed too.
    EXPECT_EQ("<a>xy</a>", write(parse("<a>x]]]]>>y</a>")));
    EXPECT_EQ("<a>xy</a>", write(parse("<a>x<![CDA<![CDATA[TA[y</a>")));
}

TEST(XMLCData, OpeningMarkersGoBeforeClosingOnes)
{
    // Removing the "]]>" here forms a new "<![CDATA[", which stays: every
    // opening marker was removed before the closing ones. (Seen through an
    // attribute value, where the "<" does not start a tag.)
    EXPECT_EQ("x<![CDATA[y", str(parse("<a v=\"x<![CDA]]>TA[y\"></a>")->attribute("v")));
    // Removing the opening marker first forms a closing one, which goes.
    EXPECT_EQ("<a>xy</a>", write(parse("<a>x]]<![CDATA[>y</a>")));
}

TEST(XMLCData, CommentsGoBeforeCDataMarkers)
{
    // A comment is removed also when it holds a CDATA marker...
    EXPECT_EQ("<a>xy</a>", write(parse("<a>x<![CDATA[<!-- ]]>-->y</a>")));
    // ...and one formed by removing a CDATA marker stays, as comments are
    // gone by then.
    EXPECT_EQ("x<!-- c -->y", str(parse("<a v=\"x<!-<![CDATA[- c -->y\"></a>")->attribute("v")));
}

} // namespace
