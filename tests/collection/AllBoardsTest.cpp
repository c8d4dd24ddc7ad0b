#include "collection/AllBoards.h"

#include "tests/support/Files.h"
#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace
{
const char kUnnamed[] = "Integrated PCI IDE Controller";

// A names database: entries of the first "PCI" element count, those of
// another element or a later "PCI" do not.
const char kDatabase[] = R"(<?xml version="1.0"?>
<AllBoards>
<Other><dev id="1A00010000000000"><name>outside</name></dev></Other>
<PCI>
<dev id="1A000100"><name>swapped digits</name></dev>
<dev id="00011A0000000000"><name>digits in another order</name></dev>
<dev id="1A00010000000000"><name>one entry</name></dev>
<dev id="1A01010100000002"><name>key one off</name></dev>
<dev id="1A01010100000001"><name>first</name></dev>
<dev id="1A010101000000010"><name>too long</name></dev>
<dev id="1A01010100000001"><name>last</name></dev>
<dev id="1A02010200000000"><name>named</name></dev>
<dev id="1A02010200000000"><label/></dev>
<dev id="1a03010300000000"><name>lower case</name></dev>
<dev id="1A05010500000000"><name></name></dev>
<item id="1A06010600000000"><name>not a dev</name></item>
<dev id=" 1A06010600000000"><name>with a blank</name></dev>
<dev id="1A07010700000000"><name>old</name></dev>
<dev id="1A07010000000000"><name>other</name></dev>
<dev id="1A07010700000000"><name>new</name></dev>
</PCI>
<PCI>
<dev id="1A06010600000000"><name>second PCI</name></dev>
</PCI>
</AllBoards>
)";
} // namespace

TEST(AllBoards, DeviceNameIsTheLastNamedEntryOfTheFirstListOrTheCatchAllLabel)
{
    ScratchFolder folder;
    std::ofstream(folder.path("allboards.xml")) << kDatabase;
    const Collection::AllBoards boards(folder.path("allboards.xml").c_str());
    struct
    {
        unsigned short vendor, device;
        unsigned subsystem;
        const char* name;
    } const cases[] = {
        {0x1A00, 0x0100, 0, "one entry"},
        {0x1A01, 0x0101, 1, "last"},
        {0x1A02, 0x0102, 0, "named"},
        {0x1A03, 0x0103, 0, kUnnamed}, // written in lower case
        {0x1A04, 0x0104, 0, kUnnamed}, // not listed
        {0x1A05, 0x0105, 0, ""},
        {0x1A06, 0x0106, 0, kUnnamed}, // listed only where entries do not count
        {0x1A07, 0x0107, 0, "new"},
        {0xFFFF, 0xFFFF, 0xFFFFFFFFu, kUnnamed},
    };
    for (auto const& c : cases)
        EXPECT_EQ(c.name, std::string(boards.deviceName(c.vendor, c.device, c.subsystem).c_str()))
            << std::hex << c.vendor << ":" << c.device;
    const Collection::AllBoards missing(folder.path("missing.xml").c_str());
    EXPECT_EQ(kUnnamed, std::string(missing.deviceName(0x1A00, 0x0100, 0).c_str()));
}
