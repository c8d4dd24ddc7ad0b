#include "AnswerFiles.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include <unistd.h>

using Collection::Unattend;

namespace
{
char const xmllint[] = "/usr/bin/xmllint";

bool wellFormed(std::string const& document)
{
    ScratchFolder dir;
    std::ofstream(dir.path("answers.xml"), std::ios::binary) << document;
    return std::system((std::string(xmllint) + " --noout '" + dir.path("answers.xml") + "'").c_str()) == 0;
}

std::string xml(Answers const& answers)
{
    std::string document = render(Unattend::W2K8, answers);
    EXPECT_TRUE(wellFormed(document));
    return document;
}

bool contains(std::string const& document, std::string const& text)
{
    return document.find(text) != std::string::npos;
}
} // namespace

// Present but empty values stay empty; absent ones take their defaults.
TEST(XMLAnswerFile, PresentButEmptyValuesStayEmpty)
{
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

// Decisions compare the value as typed, in exact letter case, not the text it
// is written as.
TEST(XMLAnswerFile, DecisionsCompareTheTypedValueInExactLetterCase)
{
    for (Answers const& answers :
         {Answers{{"ImageName", "serverstandardcore sbs"}, {"Keyboard", "ja-jp"}, {"WMIEnabled", "yes"}},
          Answers{{"ImageName", "SERVER CO\xFFRE"}, {"Keyboard", "ja-JP\xFF"}, {"WMIEnabled", "Yes\xFF"}}})
    {
        std::string document = render(Unattend::W2K8, answers);
        EXPECT_TRUE(contains(document, "\"Microsoft-Windows-Foundation-Package\""));
        EXPECT_FALSE(contains(document, "LayeredDriver"));
        EXPECT_TRUE(
            hasLine(document, "            <selection name=\"WMISnmpProvider\" state=\"false\" />"));
    }
    EXPECT_TRUE(contains(xml({{"ImageName", "serverstandardcore"}}),
                         "<CommandLine>shutdown -r -t 0</CommandLine>"));
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

    EXPECT_FALSE(contains(xml({{"JoinDomain", "corp.local"}, {"DomainAdmin", "CORP\\admin"}}),
                          "Microsoft-Windows-UnattendedJoin"));
    EXPECT_FALSE(contains(xml({{"AutoLogonCount", "2"}}), "AutoLogon"));
}

// Markup and line breaks typed into any setting of the newer family: the
// document stays well-formed and nothing typed becomes markup.
TEST(XMLAnswerFile, EverySettingIsEscapedWhereItIsWritten)
{
    if (access(xmllint, X_OK) != 0)
        GTEST_SKIP() << "needs " << xmllint;
    std::string const typed = "Smith & Sons <x> \"q\" 'a' x</FullName><Injected a='1'>yes</Injected>"
                              "<FullName>\ttab LF\nCR\rCRLF\r\nend";
    for (char const* setting :
         {"WIMVersion", "ImageName", "ComputerName", "FullName", "OrganizationName",
          "AdminPassword", "AutoLogonCount", "TimeZone", "JoinWorkgroup", "JoinDomain",
          "DomainAdmin", "DomainAdminPassword", "ProductID", "Language", "Keyboard",
          "FirstLogonCommand", "SNMPMonitor", "SNMPControl", "SNMPTraps"})
    {
        Answers answers = newerFamilyFull;
        answers.emplace_back(setting, typed);
        std::string document = render(Unattend::W2K8, answers);
        EXPECT_TRUE(wellFormed(document)) << setting;
        EXPECT_FALSE(contains(document, "<Injected")) << setting;
        EXPECT_TRUE(contains(document, "Smith &amp; Sons &lt;x&gt;")) << setting;
    }
}
