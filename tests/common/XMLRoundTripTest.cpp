// Round trips of the documents the system reads and writes: the PCI names
// database, the storage inventory and the configuration file TIDEWELL.XML;
// and of generated trees.
#include "XMLTestSupport.h"

#include <gtest/gtest.h>

#include <random>

using namespace XMLTest;

namespace
{

// Re-parsing what the writer wrote gives a tree that is written the same.
void expectWriterFixpoint(Common::string const& document)
{
    std::string once = write(parse(document));
    EXPECT_EQ(once, write(parse(once.c_str())));
}

const char* const kNamesDatabase =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!-- PCI names database -->\n"
    "<AllBoards>\n"
    "  <PCI>\n"
    "    <dev id=\"0E11B0600E114030\">\n"
    "      <name>Stratum Array 5e/532</name>\n"
    "    </dev>\n"
    "    <dev id=\"1A2B00C13C4DABCD\">\n"
    "      <name>Example Board</name>\n"
    "    </dev>\n"
    "    <dev id=\"1a2b00c100000000\"><name>lower case</name></dev>\n"
    "    <dev id=\"8086100E00000000\"><name></name></dev>\n"
    "    <dev id=\"1A2B00C13C4DABCD\">\n"
    "      <name>Example Board, later entry</name>\n"
    "    </dev>\n"
    "    <dev id=\"1A2B00C13C4DABCD\"><other/></dev>\n"
    "    <dev id=\"10DE000000000000\"><name>R&amp;D &lt;1&gt;</name></dev>\n"
    "  </PCI>\n"
    "</AllBoards>\n";

// The lookups in the database are checked by the storage page's tests.
TEST(XMLRoundTripNamesDatabase, WrittenOnOneLineAfterOneWriteAndReadBackTheSame)
{
    ElementPtr root = parse(kNamesDatabase);
    EXPECT_EQ(7u, childCount(root->getElement("PCI")));
    // White-space text of elements with children is not written.
    std::string once = write(root);
    EXPECT_EQ(0u, once.find("<AllBoards><PCI><dev id=\"0E11B0600E114030\"><name>Stratum Array "
                            "5e/532</name></dev><dev id=\"1A2B00C13C4DABCD\"><name>"));
    EXPECT_NE(std::string::npos, once.find("<name>R&amp;D &lt;1&gt;</name>"));
    expectWriterFixpoint(kNamesDatabase);
}

// One storage controller with two disks and one without, as the storage inventory writes it.
const char* const kStorageInventory =
    "<AllStorage PCIDeviceCount=\"2\">"
    "<PCIDevice BlockDeviceCount=\"2\" BootOrder=\"0\" Bus=\"02\" ClassCode=\"01\" Device=\"00\" "
    "DeviceID=\"B060\" Function=\"00\" Index=\"0\" Name=\"Stratum Array 5e/532\" Slot=\"0\" "
    "SubClassCode=\"04\" SubsystemID=\"0E114030\" VendorID=\"0E11\">"
    "<BlockDevice DeviceNode=\"/dev/strata/c0d0\" DriveNumber=\"1\" Index=\"0\" Removable=\"0\" "
    "Size=\"73407865856\"/>"
    "<BlockDevice DeviceNode=\"/dev/strata/c0d1\" DriveNumber=\"2\" Index=\"1\" Removable=\"0\" "
    "Size=\"146815733760\"/>"
    "</PCIDevice>"
    "<PCIDevice BlockDeviceCount=\"0\" BootOrder=\"1\" Bus=\"00\" ClassCode=\"01\" Device=\"00\" "
    "DeviceID=\"24DB\" Function=\"00\" Index=\"1\" Name=\"Integrated PCI IDE Controller\" "
    "Slot=\"0\" SubClassCode=\"01\" SubsystemID=\"0E1100B8\" VendorID=\"8086\"/>"
    "</AllStorage>";

TEST(XMLRoundTripStorageInventory, ReadBackAndWrittenIdentically)
{
    EXPECT_EQ(kStorageInventory, write(parse(kStorageInventory)));
    // With a declaration and line breaks added by a caller.
    std::string decorated = std::string("<?xml version=\"1.0\"?>\r\n") + kStorageInventory + "\r\n";
    EXPECT_EQ(kStorageInventory, write(parse(decorated.c_str())));

    // No controllers: an empty-element tag (which reads back as an empty root).
    ElementPtr root = element("AllStorage");
    root->Attribute("PCIDeviceCount", "0");
    EXPECT_EQ("<AllStorage PCIDeviceCount=\"0\"/>", write(root));
    // Names with markup characters are written raw.
    root = element("AllStorage");
    ElementPtr device = element("PCIDevice");
    device->Attribute("Name", "R&D <SAS> \"x\"");
    root->AddElement(device);
    EXPECT_EQ("<AllStorage><PCIDevice Name=\"R&D <SAS> \"x\"\"/></AllStorage>", write(root));
}

const char* const kConfiguration =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\r\n"
    "<!-- Tidewell extension configuration -->\r\n"
    "<Tidewell>\r\n"
    "\t<ExtensionModule value=\"C:\\Program Files\\Tidewell\\tidewell.so\"/>\r\n"
    "\t<WorkingDir value=\"C:\\Tidewell\\\"/>\r\n"
    "\t<UrlBase value=\"zrmedia://Tidewell/content\"/>\r\n"
    "</Tidewell>\r\n";

// How the settings are read is checked by the configuration's tests.
TEST(XMLRoundTripConfiguration, SettingsAreWrittenWithTheLineBreaksThatFollowThem)
{
    // The settings carry the line break that follows their empty-element
    // tags as text, so they are written with end tags.
    EXPECT_EQ("<Tidewell><ExtensionModule value=\"C:\\Program Files\\Tidewell\\tidewell.so\">\r\n\t"
              "</ExtensionModule><WorkingDir value=\"C:\\Tidewell\\\">\r\n\t</WorkingDir>"
              "<UrlBase value=\"zrmedia://Tidewell/content\">\r\n</UrlBase></Tidewell>",
              write(parse(kConfiguration)));
    expectWriterFixpoint(kConfiguration);
}

// Random trees within the documented limits (tags and names without markup
// characters, texts without "<" and only on leaves, not beginning with ">"
// (which would mark the tag before as an empty-element tag), values without
// quotes, a document element with children) are written and read back
// unchanged.
class TreeMaker
{
public:
    explicit TreeMaker(unsigned seed) : m_random(seed) {}

    ElementPtr document()
    {
        ElementPtr root = element(word().c_str());
        attributesOf(root);
        unsigned n = 1 + pick(4);
        for (unsigned i = 0; i < n; ++i)
            root->AddElement(tree(1));
        return root;
    }

private:
    unsigned pick(unsigned n)
    {
        return std::uniform_int_distribution<unsigned>(0, n - 1)(m_random);
    }

    std::string word()
    {
        static const char letters[] = "abcXYZ_.-:0";
        std::string w(1, "abcXYZ_"[pick(7)]);
        unsigned n = pick(6);
        for (unsigned i = 0; i < n; ++i)
            w += letters[pick(sizeof letters - 1)];
        return w;
    }

    std::string value()
    {
        static const char chars[] = "ab 09&;/\\>\t=";
        std::string v;
        unsigned n = pick(8);
        for (unsigned i = 0; i < n; ++i)
            v += chars[pick(sizeof chars - 1)];
        return v;
    }

    void attributesOf(ElementPtr const& e)
    {
        unsigned n = pick(4);
        for (unsigned i = 0; i < n; ++i)
            e->Attribute(word().c_str(), value().c_str());
    }

    ElementPtr tree(unsigned depth)
    {
        ElementPtr e = element(word().c_str());
        attributesOf(e);
        if (depth < 5 && pick(3) == 0)
        {
            unsigned n = 1 + pick(4);
            for (unsigned i = 0; i < n; ++i)
                e->AddElement(tree(depth + 1));
        }
        else if (pick(2) == 0)
        {
            std::string text = value();
            if (!text.empty() && text[0] == '>')
                text[0] = 'a';
            e->Text(text.c_str());
        }
        return e;
    }

    std::mt19937 m_random;
};

TEST(XMLRoundTripGenerated, WriteParseWriteIsTheIdentity)
{
    for (unsigned seed = 1; seed <= 300; ++seed)
    {
        ElementPtr tree = TreeMaker(seed).document();
        std::string once = write(tree);
        std::string twice = write(parse(once.c_str()));
        ASSERT_EQ(once, twice) << "seed " << seed;
    }
}

} // namespace
