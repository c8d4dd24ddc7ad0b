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

// The section headers, in order.
Lines headers(std::string const& document)
{
    Lines found;
    for (auto const& line : crlfLines(document))
        if (!line.empty() && line[0] == '[')
            found.push_back(line);
    return found;
}
} // namespace

TEST(TextAnswerFile, BothArchitecturesGetTheSameCrLfText)
{
    Answers answers = {{"ComputerName", "SRV01"}, {"SNMPMonitor", "public"}};
    std::string document = text(answers);
    EXPECT_EQ(render(Unattend::W2K3_X64, answers), document);
    EXPECT_EQ(document.substr(document.size() - 2), "\r\n");
    for (auto const& line : crlfLines(document))
        EXPECT_EQ(line.find_first_of("\r\n"), std::string::npos) << line;
}

TEST(TextAnswerFile, DomainOrWorkgroup)
{
    EXPECT_EQ(section(text({{"JoinWorkgroup", "WG"}, {"JoinDomain", "corp"}}), "[Identification]"),
              (Lines{"   JoinDomain=corp",
                     "   DomainAdmin=", "   DomainAdminPassword=", "   DomainAdminPassword=\"\""}));
    EXPECT_EQ(section(text({{"JoinWorkgroup", "WG"}}), "[Identification]"),
              Lines{"   JoinWorkgroup=WG"});
}

TEST(TextAnswerFile, SecondDiscCommandsOnlyForR2RunOne)
{
    Lines withoutR2 = {"   \"C:\\guicmd.exe\""};
    EXPECT_EQ(section(text({{"R2Run", "yes"}}), "[GuiRunOnce]"), withoutR2);
    EXPECT_EQ(section(text({{"R2Run", "11"}}), "[GuiRunOnce]"), withoutR2);
    EXPECT_EQ(section(text({{"R2Run", "1"}}), "[GuiRunOnce]").size(), 4u);
}

TEST(TextAnswerFile, ConnectionCountOnlyPerServer)
{
    EXPECT_EQ(
        section(text({{"AutoMode", "PERSERVER"}, {"AutoUsers", "5"}}), "[LicenseFilePrintData]"),
        (Lines{"   AutoMode=PERSERVER", "   AutoUsers=5"}));
    EXPECT_EQ(
        section(text({{"AutoMode", "perseat"}, {"AutoUsers", "5"}}), "[LicenseFilePrintData]"),
        Lines{"   AutoMode=perseat"});
    EXPECT_EQ(section(text({{"AutoUsers", "5"}}), "[LicenseFilePrintData]"), Lines{});
}

TEST(TextAnswerFile, SnmpNeedsAMonitorCommunity)
{
    std::string controlOnly = text({{"SNMPControl", "private"}, {"SNMPTraps", "10.0.0.5"}});
    EXPECT_EQ(section(controlOnly, "[SNMP]"), Lines{});
    EXPECT_EQ(section(controlOnly, "[NetOptionalComponents]"), Lines{});
    // Without a control community the line keeps a blank before its end.
    EXPECT_EQ(section(text({{"SNMPMonitor", "public"}}), "[SNMP]"),
              (Lines{"   Accept_CommunityName=public:Read_Only ", "   Community_Name=\"public\""}));
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
    for (char const* setting :
         {"ComputerName",   "FullName",    "OrganizationName",    "AdminPassword",
          "AutoLogonCount", "TimeZone",    "SkipRegional",        "JoinWorkgroup",
          "JoinDomain",     "DomainAdmin", "DomainAdminPassword", "ProductID",
          "AutoMode",       "AutoUsers",   "MassStorageDriver",   "ExtendOemPartition",
          "FileSystem",     "SNMPMonitor", "SNMPControl",         "SNMPTraps",
          "R2Run",          "Rotate"})
    {
        auto withValue = [&](std::string const& value)
        {
            Answers answers = olderFamilyFull;
            answers.emplace_back(setting, value);
            return text(answers);
        };
        std::string plain = withValue("plain"), document = withValue(typed);
        EXPECT_EQ(crlfLines(document).size(), crlfLines(plain).size()) << setting;
        EXPECT_EQ(headers(document), headers(plain)) << setting;
        EXPECT_EQ(document, withValue(blanked)) << setting;
    }
}
