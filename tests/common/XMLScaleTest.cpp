// Nesting deeper than a per-level recursion's stack would take, and sizes on
// which quadratic parsing or writing would not finish within the time limit.
#include "XMLTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <pthread.h>
#include <string>
#include <vector>

using namespace XMLTest;

namespace
{

// A name unique to i, in an order scrambled against i.
std::string scrambled(unsigned i)
{
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "n%08X", i * 2654435761u);
    return buffer;
}

TEST(XMLScale, ADocumentOf50000ElementsAndLargeTextsAreReadInOnePass)
{
    std::string doc = "<AllBoards><PCI>";
    for (unsigned i = 0; i < 24999; ++i) // + AllBoards + PCI = 50,000 elements
        doc +=
            "<dev id=\"" + scrambled(i) + "\"><name>Board " + std::to_string(i) + "</name></dev>";
    doc += "</PCI></AllBoards>";
    EXPECT_EQ(doc, write(parse(doc)));

    std::string big(4u << 20, 'x');
    ElementPtr root = parse("<?xml version=\"1.0\"?><!--" + big + "--><a><!--" + big + "-->" + big +
                            "<![CDATA[" + big + "]]></a>");
    EXPECT_EQ(2 * big.size(), root->text().size());
}

// The sanitizers' checks cost time and memory: 50,000 there.
#ifdef __SANITIZE_ADDRESS__
unsigned const WideElementAttributes = 50000;
#else
unsigned const WideElementAttributes = 200000;
#endif

TEST(XMLScale, OneElementOf200000AttributesIsWrittenBackInNameOrder)
{
    // Every 1000th name comes again with a new value.
    std::string doc = "<names";
    std::vector<std::string> expected;
    for (unsigned i = 0; i < WideElementAttributes; ++i)
    {
        std::string value = i % 1000 == 0 ? "again " + std::to_string(i) : std::to_string(i);
        doc += " " + scrambled(i) + "=\"" + std::to_string(i) + "\"";
        expected.push_back(" " + scrambled(i) + "=\"" + value + "\"");
    }
    for (unsigned i = 0; i < WideElementAttributes; i += 1000)
        doc += " " + scrambled(i) + "=\"again " + std::to_string(i) + "\"";
    std::sort(expected.begin(), expected.end());
    std::string written = "<names";
    for (std::string const& attribute : expected)
        written += attribute;
    std::string const got = write(parse(doc + "></names>"));
    EXPECT_TRUE(written + "/>" == got) << "not printed: 5 MB"; // compared whole
}

// Parsed, walked, written and released on a thread whose whole stack is 512 KiB.
TEST(XMLScale, NestingDepthOf100000NeedsNoDeepStack)
{
    auto work = [](void*) -> void*
    {
        std::string open, close;
        for (unsigned i = 0; i < 100000; ++i)
            open += "<d>", close += "</d>";
        ElementPtr root = parse(open + "core" + close), e = root;
        unsigned depth = 1;
        for (; e->elementBegin() != e->elementEnd(); ++depth)
            e = *e->elementBegin();
        EXPECT_EQ(100000u, depth);
        EXPECT_EQ("core", text(e->text()));
        EXPECT_EQ(open + "core" + close, write(root));
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

} // namespace
