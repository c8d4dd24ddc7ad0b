#include "AnswerFiles.h"

#include <gtest/gtest.h>

#include <cstdio>

#include <unistd.h>

using Collection::Unattend;

namespace
{
char const xmllint[] = "/usr/bin/xmllint";

// A document written to a scratch file and read back by xmllint.
class ReadBack
{
public:
    explicit ReadBack(std::string const& document) : m_file(m_dir.file("answers.xml"))
    {
        std::ofstream(m_file, std::ios::binary) << document;
    }

    bool wellFormed() const
    {
        int status;
        run("--noout", status);
        return status == 0;
    }

private:
    std::string run(std::string const& arguments, int& status) const
    {
        std::string command = std::string(xmllint) + " " + arguments + " '" + m_file + "'";
        std::string output;
        FILE* pipe = popen(command.c_str(), "r");
        char buffer[4096];
        for (std::size_t n; pipe && (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;)
            output.append(buffer, n);
        status = pipe ? pclose(pipe) : -1;
        return output;
    }

    TempDir m_dir;
    std::string m_file;
};

void expectWellFormed(std::string const& document)
{
    EXPECT_TRUE(ReadBack(document).wellFormed());
}

std::string xml(Answers const& answers, Unattend::EnUnattendOS os = Unattend::W2K8)
{
    std::string document = render(os, answers);
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

    std::string noPassword = xml({{"JoinDomain", "corp.local"}, {"DomainAdmin", "CORP\\admin"}});
    EXPECT_FALSE(contains(noPassword, "Microsoft-Windows-UnattendedJoin"));
    std::string noLogonPassword = xml({{"AutoLogonCount", "2"}});
    EXPECT_FALSE(contains(noLogonPassword, "AutoLogon"));
}

// What people type, markup and line breaks included, in every setting of the
// newer family: the document stays well-formed and nothing typed becomes
// markup of its own.
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
        EXPECT_TRUE(ReadBack(document).wellFormed()) << setting;
        EXPECT_FALSE(contains(document, "<Injected")) << setting;
        EXPECT_TRUE(contains(document, "Smith &amp; Sons &lt;x&gt;")) << setting;
    }
}
