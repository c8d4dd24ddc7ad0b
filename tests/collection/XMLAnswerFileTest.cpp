#include "AnswerFiles.h"

#include <gtest/gtest.h>

#include <cstdio>

using Collection::Unattend;

namespace
{
std::size_t indentOf(std::string const& line)
{
    return line.find_first_not_of(' ');
}

// The tag name of a line "<name ...>" or "</name>".
std::string tagOf(std::string const& line)
{
    std::size_t start = line.find_first_not_of(" </");
    return line.substr(start, line.find_first_of(" >", start) - start);
}

// Checks the layout rules every document follows: CR LF after every line but
// "</unattend>", and each element holding elements closed on its own line at
// the indentation of its opening tag.
void expectWellLaidOut(std::string const& document)
{
    ASSERT_GE(document.size(), 13u);
    EXPECT_EQ(document.substr(document.size() - 13), "\r\n</unattend>");
    std::vector<std::pair<std::string, std::size_t>> open;
    for (auto const& line : crlfLines(document))
    {
        ASSERT_EQ(line.find_first_of("\r\n"), std::string::npos) << line;
        std::string trimmed = line.substr(indentOf(line));
        if (trimmed.compare(0, 2, "</") == 0)
        {
            ASSERT_FALSE(open.empty()) << line;
            EXPECT_EQ(open.back(), std::make_pair(tagOf(line), indentOf(line))) << line;
            open.pop_back();
        }
        else if (trimmed.compare(0, 2, "<?") != 0 && trimmed.find("</") == std::string::npos &&
                 trimmed.compare(trimmed.size() - 2, 2, "/>") != 0)
            open.emplace_back(tagOf(line), indentOf(line));
    }
    EXPECT_TRUE(open.empty());
}

// The document parses as XML (its values hold no markup characters).
void expectWellFormed(std::string const& document)
{
    TempDir dir;
    std::string file = dir.file("answers.xml");
    std::ofstream(file, std::ios::binary) << document;
    EXPECT_EQ(std::system(("xmllint --noout '" + file + "'").c_str()), 0);
}

std::string xml(Answers const& answers, Unattend::EnUnattendOS os = Unattend::W2K8)
{
    std::string document = render(os, answers);
    expectWellLaidOut(document);
    expectWellFormed(document);
    return document;
}

std::string replaced(std::string text, std::string const& what, std::string const& with)
{
    for (std::size_t at = text.find(what); at != std::string::npos;
         at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
    return text;
}

bool contains(std::string const& document, std::string const& text)
{
    return document.find(text) != std::string::npos;
}
} // namespace

TEST(XMLAnswerFile, EmptyAnswersOnBothArchitectures)
{
    expectSameDocument(xml({}), expected("xml-empty-x86.xml"));
    std::string amd64 = replaced(expected("xml-empty-x86.xml"), "processorArchitecture=\"x86\"",
                                 "processorArchitecture=\"amd64\"");
    expectSameDocument(xml({}, Unattend::W2K8_X64), amd64);
}

TEST(XMLAnswerFile, FullAnswers)
{
    expectSameDocument(xml(newerFamilyFull, Unattend::W2K8_X64),
                       expected("xml-full-core-amd64.xml"));
    // Present but empty values stay empty; absent ones take their defaults.
    // clang-format off
    Answers const sbsWorkgroup = {
        {"ImageName", "Windows SBS 2008 Standard"}, {"ComputerName", ""},
        {"OrganizationName", "Velmar Ltd"}, {"AutoLogonCount", "3"}, {"TimeZone", ""},
        {"JoinWorkgroup", "WORKGROUP"}, {"JoinDomain", "corp.local"}, {"DomainAdmin", "admin"},
        {"DomainAdminPassword", "x"}, {"Keyboard", "de-DE"}, {"FirstLogonCommand", ""},
        {"SNMPMonitor", "public"}, {"WMIEnabled", "Yes"}};
    // clang-format on
    expectSameDocument(xml(sbsWorkgroup), expected("xml-sbs-workgroup-x86.xml"));
}

TEST(XMLAnswerFile, ExactLetterCaseDecidesPackageKeyboardAndWmi)
{
    std::string lower = xml(
        {{"ImageName", "serverstandardcore sbs"}, {"Keyboard", "ja-jp"}, {"WMIEnabled", "yes"}});
    EXPECT_TRUE(contains(lower, "\"Microsoft-Windows-Foundation-Package\""));
    EXPECT_TRUE(contains(lower, "<CommandLine>shutdown -r -t 0</CommandLine>"));
    EXPECT_FALSE(contains(lower, "LayeredDriver"));
    EXPECT_TRUE(
        hasLine(lower, "            <selection name=\"WMISnmpProvider\" state=\"false\" />"));
}

TEST(XMLAnswerFile, SnmpAndComputerNameNeedAMonitorCommunity)
{
    std::string withoutMonitor =
        xml({{"SNMPTraps", "10.0.0.5"}, {"SNMPControl", "private"}, {"ComputerName", "SRV08"}});
    EXPECT_FALSE(contains(withoutMonitor, "specialize"));
    EXPECT_FALSE(contains(withoutMonitor, "SRV08"));
    EXPECT_FALSE(contains(withoutMonitor, "10.0.0.5"));
    EXPECT_TRUE(hasLine(withoutMonitor, "            <selection name=\"SNMP\" state=\"false\" />"));

    // A present, empty monitor community switches SNMP on; the computer name
    // defaults to "*"; Rotate alone accepts the licence but adds no command
    // outside the specialize pass.
    std::string emptyMonitor = xml({{"SNMPMonitor", ""}});
    EXPECT_TRUE(hasLine(emptyMonitor, "            <selection name=\"SNMP\" state=\"true\" />"));
    EXPECT_TRUE(hasLine(emptyMonitor, "            <ComputerName>*</ComputerName>"));
    std::string rotateOnly = xml({{"Rotate", "1"}});
    EXPECT_TRUE(hasLine(rotateOnly, "                <AcceptEula>true</AcceptEula>"));
    EXPECT_FALSE(contains(rotateOnly, "Rotate Script"));
}

TEST(XMLAnswerFile, DomainJoinSplitsTheAccountAndNeedsAllThree)
{
    std::string slash = xml({{"JoinDomain", "corp.local"},
                             {"DomainAdmin", "CORP/admin"},
                             {"DomainAdminPassword", "Pa55"}});
    EXPECT_TRUE(hasLine(slash, "                  <Domain>CORP</Domain>"));
    EXPECT_TRUE(hasLine(slash, "                  <Username>/admin</Username>"));
    EXPECT_TRUE(hasLine(slash, "               <JoinDomain>corp.local</JoinDomain>"));

    std::string plain =
        xml({{"JoinDomain", "corp.local"}, {"DomainAdmin", "admin"}, {"DomainAdminPassword", "p"}});
    EXPECT_TRUE(hasLine(plain, "                  <Domain>corp.local</Domain>"));
    EXPECT_TRUE(hasLine(plain, "                  <Username>admin</Username>"));

    std::string noPassword = xml({{"JoinDomain", "corp.local"}, {"DomainAdmin", "CORP\\admin"}});
    EXPECT_FALSE(contains(noPassword, "Microsoft-Windows-UnattendedJoin"));
    std::string noLogonPassword = xml({{"AutoLogonCount", "2"}});
    EXPECT_FALSE(contains(noLogonPassword, "AutoLogon"));
}

TEST(XMLAnswerFile, ValuesAreInsertedWithoutEscaping)
{
    std::string document = render(Unattend::W2K8, {{"FullName", "A & <B>"}});
    EXPECT_TRUE(hasLine(document, "                <FullName>A & <B></FullName>"));
}
