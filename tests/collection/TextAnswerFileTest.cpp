#include "AnswerFiles.h"

#include <gtest/gtest.h>

using Collection::Unattend;

namespace
{
std::string text(Answers const& answers)
{
    return render(Unattend::W2K3, answers);
}

// The lines from `header` to the next section header, exclusive.
std::vector<std::string> section(std::string const& document, std::string const& header)
{
    std::vector<std::string> lines = crlfLines(document), found;
    bool inside = false;
    for (auto const& line : lines)
    {
        if (!line.empty() && line[0] == '[')
            inside = line == header;
        else if (inside)
            found.push_back(line);
    }
    return found;
}

typedef std::vector<std::string> Lines;
} // namespace

TEST(TextAnswerFile, SectionsFollowTheAnswers)
{
    const struct
    {
        Answers answers;
        const char* header;
        Lines lines;
    } cases[] = {
        {{{"JoinWorkgroup", "WG"}, {"JoinDomain", "corp"}},
         "[Identification]",
         {"   JoinDomain=corp", "   DomainAdmin=", "   DomainAdminPassword=",
          "   DomainAdminPassword=\"\""}},
        {{{"JoinWorkgroup", "WG"}}, "[Identification]", {"   JoinWorkgroup=WG"}},
        // Second-disc commands only for R2Run "1".
        {{{"R2Run", "yes"}}, "[GuiRunOnce]", {"   \"C:\\guicmd.exe\""}},
        {{{"R2Run", "11"}}, "[GuiRunOnce]", {"   \"C:\\guicmd.exe\""}},
        // The connection count only per server.
        {{{"AutoMode", "PERSERVER"}, {"AutoUsers", "5"}},
         "[LicenseFilePrintData]",
         {"   AutoMode=PERSERVER", "   AutoUsers=5"}},
        {{{"AutoMode", "perseat"}, {"AutoUsers", "5"}}, "[LicenseFilePrintData]", {"   AutoMode=perseat"}},
        {{{"AutoUsers", "5"}}, "[LicenseFilePrintData]", {}},
        // SNMP needs a monitor community; without a control one a blank ends the line.
        {{{"SNMPControl", "private"}, {"SNMPTraps", "10.0.0.5"}}, "[SNMP]", {}},
        {{{"SNMPControl", "private"}}, "[NetOptionalComponents]", {}},
        {{{"SNMPMonitor", "public"}},
         "[SNMP]",
         {"   Accept_CommunityName=public:Read_Only ", "   Community_Name=\"public\""}},
        // Keys ignore letter case, and the last value wins.
        {{{"snmpmonitor", "public"}, {"SnmpMonitor", "ro"}},
         "[SNMP]",
         {"   Accept_CommunityName=ro:Read_Only ", "   Community_Name=\"ro\""}},
    };
    for (auto const& c : cases)
        EXPECT_EQ(c.lines, section(text(c.answers), c.header)) << c.header << " " << c.answers[0].first;
    EXPECT_EQ(4u, section(text({{"R2Run", "1"}}), "[GuiRunOnce]").size());
    EXPECT_EQ(render(Unattend::W2K3_X64, olderFamilyFull), text(olderFamilyFull))
        << "both architectures get the same text";
}

TEST(TextAnswerFile, ValuesAreWrittenVerbatim)
{
    std::string document = text({{"FullName", "A \"B\" & <C>"}, {"MassStorageDriver", "x=y"}});
    EXPECT_TRUE(hasLine(document, "   FullName=\"A \"B\" & <C>\""));
    EXPECT_EQ(section(document, "[MassStorageDrivers]"), Lines{"   x=y"});
}

// A line break typed into any setting stays inside its entry: it is written
// as a blank, and adds neither a line nor a section.
TEST(TextAnswerFile, LineBreaksInValuesBecomeBlanks)
{
    std::string const typed = "Smith & Sons LF\nCR\rCRLF\r\n[Injected]\r\nKey=value";
    std::string const blanked = "Smith & Sons LF CR CRLF  [Injected]  Key=value";
    for (auto const& answer : olderFamilyFull)
    {
        Answers typedIn = olderFamilyFull, blankedIn = olderFamilyFull;
        typedIn.emplace_back(answer.first, typed);
        blankedIn.emplace_back(answer.first, blanked);
        EXPECT_EQ(text(typedIn), text(blankedIn)) << answer.first;
    }
}
