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

TEST(XMLMalformed, EveryTextGivesTheTreeBuiltUntilTheParseStops)
{
    struct
    {
        char const* text;
        char const* written; // an empty root is written as "<" "" "/>"
    } const cases[] = {
        // Empty and tag-free texts, and text before the first tag.
        {"", "</>"},
        {" \r\n\t ", "</>"},
        {"just some words", "</>"},
        {"hello <a></a>", "</>"},
        // Text after a child element, where a tag is expected, is never
        // consumed: the parse stops there and keeps the tree built so far.
        {"<a><b></b>hi</a>", "<a><b/></a>"},
        {"<a><b></b>hi<c/><d></d></a>", "<a><b/></a>"},
        // After an empty-element tag, text is read as for any start tag.
        {"<a><b/>hi</a>", "<a><b>hi</b></a>"},
        // A ">" right after the tag's ">" marks it self-closing; the end tag
        // then closes the parent, which stays current, so b is still appended.
        {"<r><a>>x</a><b/></r>", "<r><a>x</a><b/></r>"},
        {"<a>>x</a>", "</>"},
        // Unclosed elements: the element current at the end is the root.
        {"<a><b></b>", "<a><b/></a>"},
        {"<a><b><c/>", "<b><c/></b>"},
        {"<a>text", "<a>text</a>"},
        // Stray end tags, end tags with attributes or an extra ">".
        {"</x></y><a><b/></a></a></z>", "<a><b/></a>"},
        {"<a></b></c><d/></a>", "<a><d/></a>"},
        {"</a>", "</>"},
        {"</>", "</>"},
        {"<a><b></b x=\"1\"></a>>", "<a><b/></a>"},
        // An unterminated comment cuts the rest; "<!-" is a start tag.
        {"<a><b></b><!-- open <c></c></a>", "<a><b/></a>"},
        {"<!--", "</>"},
        {"<!-", "<!-/>"},
        // Truncated tags ("/" without ">" is not an empty-element tag).
        {"<a><b", "<b/>"},
        {"<a><b ", "<b/>"},
        {"<a><b/", "<b/>"},
        {"<a></a", "<a/>"},
        {"<a><b x=", "<b x=\"\"/>"},
        // A lone "<".
        {"<", "</>"},
        {"  <  ", "</>"},
        {"<>", "</>"},
        {"< a></a>", "</>"},
        {"<a><", "<a/>"},
        {"<a><b></b><", "<a><b/></a>"},
        // An unclosed quote runs to the end; its last character closes it.
        {"<a x=\"1><b></b></a>", "<a x=\"1><b></b></a\"/>"},
        {"<a x='1", "<a x=\"\"/>"},
        {"<a x=\"", "<a x=\"\"/>"},
        {"<a b c=d =\"e\" f=></a>", "<a =\"e\" b=\"\" c=\"\" f=\"\"/>"},
        // Lone markers and broken declarations.
        {"?>", "</>"},
        {"<?xml version=\"1.0\"", "<?xml version=\"1.0\"/>"},
        {"]]>", "</>"},
        {"<![CDATA[", "</>"},
        {"<![CDATA[<a></a>", "<a/>"},
    };
    for (auto const& c : cases)
        EXPECT_EQ(c.written, survive(c.text)) << c.text;
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
        "  <PCIDevice Index=\"0\" Name='Stratum Array'>\n"
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

TEST(XMLMalformed, RandomMarkupAndRandomBytesTerminate)
{
    static const char* const pieces[] = {
        "<",   ">",  "/",     "</",    "/>",          "<a",   "<b>",  "</a>", "</b>", "=",
        "\"",  "'",  " ",     "\n",    "x",           "id",   "<!--", "-->",  "-",    "<![CDATA[",
        "]]>", "?>", "<?xml", "&amp;", "<a x=\"1\">", "<c/>", "\t",   "!",    "?"};
    const unsigned count = sizeof pieces / sizeof pieces[0];
    std::mt19937 random(20240601);
    auto upTo = [&](unsigned n) { return std::uniform_int_distribution<unsigned>(0, n)(random); };
    for (int round = 0; round < 3000; ++round)
    {
        std::string markup, bytes;
        for (unsigned i = upTo(40); i > 0; --i)
            markup += pieces[upTo(count - 1)];
        for (unsigned i = upTo(64); i > 0; --i)
            bytes += static_cast<char>(upTo(255));
        survive(markup);
        survive(bytes);
    }
}

} // namespace
