// Size and depth: a document of 50,000 elements, and nesting far deeper than
// any machine stack would take if parsing, writing or releasing recursed per
// level. These tests also guard the linear-time promise: a parser or writer
// that copied the rest of the text per element would not finish within the
// test timeout on these sizes; nor would one whose attributes cost linear
// time each, on an element with 200,000 of them.
#include "XMLTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <pthread.h>
#include <string>
#include <utility>
#include <vector>

using namespace XMLTest;

namespace
{

std::string key(unsigned i)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%08X%08X", i * 2654435761u, i);
    return buffer;
}

// A names database of `entries` dev/name pairs, on one line in the writer's
// own form: 2 + 2 * entries elements.
std::string namesDatabase(unsigned entries)
{
    std::string doc = "<AllBoards><PCI>";
    for (unsigned i = 0; i < entries; ++i)
        doc += "<dev id=\"" + key(i) + "\"><name>Board " + std::to_string(i) + "</name></dev>";
    doc += "</PCI></AllBoards>";
    return doc;
}

TEST(XMLScale, ADocumentOf50000ElementsParsesAndWritesBackExactly)
{
    const unsigned entries = 24999; // + AllBoards + PCI = 50,000 elements
    const std::string doc = namesDatabase(entries);
    ElementPtr root = parse(doc.c_str());
    ASSERT_EQ("AllBoards", str(root->tag()));
    ElementPtr pci = root->getElement("PCI");
    unsigned count = 0;
    for (auto it = pci->elementBegin(); it != pci->elementEnd(); ++it, ++count)
    {
        if (count % 997 != 0 && count != entries - 1)
            continue;
        ASSERT_EQ(key(count), str((*it)->attribute("id")));
        ASSERT_EQ("Board " + std::to_string(count), str((*it)->getElement("name")->text()));
    }
    EXPECT_EQ(entries, count);
    EXPECT_EQ(doc, write(root));
}

TEST(XMLScale, ALargeTextAndALargeCommentAreHandledInOnePass)
{
    std::string big(4u << 20, 'x');
    std::string doc = "<?xml version=\"1.0\"?><!--" + big + "--><a><!--" + big + "-->" + big +
                      "<![CDATA[" + big + "]]></a>";
    ElementPtr root = parse(doc.c_str());
    EXPECT_EQ("a", str(root->tag()));
    EXPECT_EQ(2 * big.size(), root->text().size());
}

// Where two texts first differ; the shorter one's size when it is a prefix
// of the other.
size_t firstDifference(std::string const& a, std::string const& b)
{
    return std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin();
}

// The sanitizers check every allocation and memory access, which costs time
// and, under emulation, more memory than the emulated address space leaves
// them: they run the same steps on 50,000 attributes. How long a parse of
// 200,000 takes is bench_xml's figure.
#ifdef __SANITIZE_ADDRESS__
const unsigned WideElementAttributes = 50000;
#else
const unsigned WideElementAttributes = 200000;
#endif

// One element "names" with `count` distinct attribute names in a scrambled
// order (i * 2654435761 is different for every 32-bit i), then every 1000th
// one again with a new value, which replaces the first; and that element as
// the writer must give it back: names ascending, the last value of each.
// Names and values are short enough for std::string to hold them inline, to
// spare the sanitized build's memory.
void wideElement(unsigned count, Common::string& document, std::string& written)
{
    auto name = [](unsigned i)
    {
        char buffer[16];
        std::snprintf(buffer, sizeof buffer, "n%08X", i * 2654435761u);
        return std::string(buffer);
    };
    std::string doc = "<names";
    std::vector<std::pair<std::string, std::string>> last;
    for (unsigned i = 0; i < count; ++i)
    {
        doc += " " + name(i) + "=\"" + std::to_string(i) + "\"";
        last.emplace_back(name(i), std::to_string(i));
    }
    for (unsigned i = 0; i < count; i += 1000)
    {
        doc += " " + name(i) + "=\"again " + std::to_string(i) + "\"";
        last[i].second = "again " + std::to_string(i);
    }
    doc += "></names>";
    document = Common::string(doc.c_str(), doc.size());
    std::sort(last.begin(), last.end());
    written = "<names";
    for (auto const& attribute : last)
        written += " " + attribute.first + "=\"" + attribute.second + "\"";
    written += "/>";
}

TEST(XMLScale, OneElementOf200000AttributesParsesAndWritesBackInNameOrder)
{
    Common::string text;
    std::string expected;
    wideElement(WideElementAttributes, text, expected);
    ElementPtr root = parse(text);
    // Compared whole, but not printed: it is 5 MB.
    const std::string written = write(root);
    EXPECT_EQ(expected.size(), written.size());
    EXPECT_EQ(expected.size(), firstDifference(expected, written));
}

// "<d><d>...<d>core</d>...</d></d>", `depth` elements deep.
std::string nested(unsigned depth)
{
    std::string doc;
    doc.reserve(depth * 7 + 4);
    for (unsigned i = 0; i < depth; ++i)
        doc += "<d>";
    doc += "core";
    for (unsigned i = 0; i < depth; ++i)
        doc += "</d>";
    return doc;
}

// Depth of the single chain below `root`, walked without recursion.
unsigned chainDepth(ElementPtr e, std::string& innermostText)
{
    unsigned depth = 1;
    while (e->elementBegin() != e->elementEnd())
    {
        e = *e->elementBegin();
        ++depth;
    }
    innermostText = str(e->text());
    return depth;
}

void expectDeepDocumentHandled(unsigned depth)
{
    const std::string doc = nested(depth);
    ElementPtr root = parse(doc.c_str());
    std::string core;
    EXPECT_EQ(depth, chainDepth(root, core));
    EXPECT_EQ("core", core);
    EXPECT_EQ(doc, write(root));
    root = ElementPtr(); // releases the whole chain
}

TEST(XMLScale, DeepUnclosedChainsAndDeepTreesPartlyHeldAreReleased)
{
    // The root receives the innermost element; the chain above it is
    // released inside Parse.
    std::string doc;
    for (unsigned i = 0; i < 10000; ++i)
        doc += "<d>";
    ElementPtr root = parse((doc + "<last/>").c_str());
    EXPECT_EQ("<d><last/></d>", write(root));

    root = parse(nested(20000).c_str());
    ElementPtr middle = root;
    for (unsigned i = 0; i < 10000; ++i)
        middle = *middle->elementBegin();
    root = ElementPtr();
    std::string core;
    EXPECT_EQ(10000u, chainDepth(middle, core));
    EXPECT_EQ("core", core);
}

// Runs `work` on a thread whose whole stack is `bytes`: a recursion per
// level of a 100,000-deep tree would need far more than that.
void onSmallStack(void (*work)(), size_t bytes)
{
    pthread_attr_t attributes;
    ASSERT_EQ(0, pthread_attr_init(&attributes));
    ASSERT_EQ(0, pthread_attr_setstacksize(&attributes, bytes));
    pthread_t thread;
    ASSERT_EQ(0, pthread_create(
                     &thread, &attributes,
                     [](void* w) -> void*
                     {
                         reinterpret_cast<void (*)()>(w)();
                         return nullptr;
                     },
                     reinterpret_cast<void*>(work)));
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(XMLScale, NestingDepthOf100000NeedsNoDeepStack)
{
    onSmallStack([] { expectDeepDocumentHandled(100000); }, 512u << 10);
}

} // namespace

TEST(XMLScale, ElementsFillTheirClassPoolThenOverflowElsewhere)
{
    using Common::XML::Element;
    unsigned before = Element::localInUse();
    std::vector<Common::shared_ptr<Element>> elements;
    for (unsigned i = 0; i < Element::localCapacity() + 50; ++i)
        elements.emplace_back(new Element("e"));
    EXPECT_EQ(Element::localCapacity(), Element::localInUse());
    unsigned local = 0;
    for (auto const& element : elements)
        local += Element::isLocal(element.get()) ? 1 : 0;
    EXPECT_EQ(Element::localCapacity() - before, local);
    elements.clear();
    EXPECT_EQ(before, Element::localInUse());
}
