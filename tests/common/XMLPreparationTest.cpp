// The preparation steps of Parser::XML: the declaration, comments
// and CDATA markers are removed before parsing.
#include "XMLTestSupport.h"

#include <gtest/gtest.h>

using namespace XMLTest;

namespace
{

struct Case
{
    char const* text;
    char const* written;
};

void expectWritten(std::initializer_list<Case> cases)
{
    for (auto const& c : cases)
        EXPECT_EQ(c.written, write(parse(c.text))) << c.text;
}

TEST(XMLDeclaration, EverythingUpToTheFirstQuestionMarkGreaterThanIsDropped)
{
    expectWritten({
        {"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- names -->\n<a><!-- a --><b/></a>\n"
         "<!-- trailing -->",
         "<a><b/></a>"},
        {"<?xml-stylesheet href=\"s.xsl\"?>\n<a></a>", "<a/>"},
        {"junk <b/> and more ?><a></a>", "<a/>"},
        {"<a>is it?><b></b></a>", "<b/>"}, // no declaration: the first "?>" still cuts
        {"<?xml version=\"1.0\"?>\n\n", "</>"},
        // Only up to the first "?>": a second declaration reads as an element
        // named "?xml" that holds the rest.
        {"<?xml version=\"1.0\"?><?xml version=\"1.0\"?><a/>", "<?xml version=\"1.0\"\"><a/></?xml>"},
        // The declaration goes first, so a comment before it goes with it, and
        // a "?>" inside a comment cuts the comment's start away.
        {"<!-- a --><?xml version=\"1.0\"?><!-- b --><r></r>", "<r/>"},
        {"<!-- x?> --><r></r>", "</>"},
    });
}

TEST(XMLComments, CommentsAreRemovedAnywhereAndAnUnterminatedOneCutsTheRest)
{
    expectWritten({
        {"<name>Stratum <!-- not this -->Array</name>", "<name>Stratum Array</name>"},
        {"<a><!--\n<b x=\"1\"/>\n<c>\n--><d/></a>", "<a><d/></a>"},
        {"<a>x<!--1--><!--2-->y</a>", "<a>xy</a>"},
        {"<a>x-<!-- - -- --->y</a>", "<a>x-y</a>"},
        // The end is searched from the start: "-->" overlaps the "<!--".
        {"<a>x<!-->y</a>", "<a>xy</a>"},
        {"<a>x<!--->y</a>", "<a>xy</a>"},
        // A comment formed by removing another is removed too.
        {"<a>x<!-<!-- inner -->- outer -->y</a>", "<a>xy</a>"},
        {"<a>x<<!---->!-- outer -->y</a>", "<a>xy</a>"},
        {"<a><b/><!-- never closed <c/></a>", "<a><b/></a>"},
        {"<!-- everything <a/>", "</>"},
        {"<a>x<!--", "<a>x</a>"},
        {"<a>x<!-- ok -->y<!-- open </a>", "<a>xy</a>"},
    });
}

TEST(XMLCData, EveryMarkerGoesAfterTheCommentsOpeningMarkersFirst)
{
    expectWritten({
        {"<name><![CDATA[Ethernet Pro 100]]></name>", "<name>Ethernet Pro 100</name>"},
        // Only the markers go: markup inside is parsed as markup.
        {"<a><![CDATA[<b/>]]></a>", "<a><b/></a>"},
        {"<a>x<![CDATA[y]]>z]]></a>", "<a>xyz</a>"},
        {"<a><![CDATA[x<![CDATA[yz</a>", "<a>xyz</a>"},
        // A marker formed by removing another is removed too...
        {"<a>x]]]]>>y</a>", "<a>xy</a>"},
        {"<a>x<![CDA<![CDATA[TA[y</a>", "<a>xy</a>"},
        {"<a>x]]<![CDATA[>y</a>", "<a>xy</a>"},
        // ... but an opening one formed by removing a closing one stays (seen
        // through an attribute value, where "<" does not start a tag).
        {"<a v=\"x<![CDA]]>TA[y\"></a>", "<a v=\"x<![CDATA[y\"/>"},
        // Comments go first: also one holding a marker; one formed by
        // removing a marker stays.
        {"<a>x<![CDATA[<!-- ]]>-->y</a>", "<a>xy</a>"},
        {"<a v=\"x<!-<![CDATA[- c -->y\"></a>", "<a v=\"x<!-- c -->y\"/>"},
    });
}

} // namespace
