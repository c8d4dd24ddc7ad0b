#include "AnswerFiles.h"

#include <gtest/gtest.h>

#include <cstdio>

#include <unistd.h>

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

    // The text an XML parser reads at `path`: steps separated by "/", each a
    // local name (namespaces aside), "@name" for an attribute, optionally
    // followed by a position "[n]"; the first step is looked for anywhere.
    std::string textAt(std::string const& path) const
    {
        std::string xpath = "/";
        for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1)
        {
            end = path.find('/', start);
            std::string step = path.substr(start, end - start);
            std::string axis = step[0] == '@' ? "@" : "", name = step.substr(axis.size());
            std::string position =
                name.find('[') == std::string::npos ? "" : name.substr(name.find('['));
            name = name.substr(0, name.size() - position.size());
            xpath +=
                name == ".." ? "/.." : "/" + axis + "*[local-name()=\"" + name + "\"]" + position;
        }
        int status;
        std::string output = run("--xpath 'string(" + xpath + ")'", status);
        EXPECT_EQ(status, 0) << xpath;
        // xmllint ends the string with a line end of its own.
        return output.empty() ? output : output.substr(0, output.size() - 1);
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

// What people type, markup and line breaks included, in every setting of the
// newer family; each is read back by an XML parser where it is written.
TEST(XMLAnswerFile, EverySettingReadsBackAsTyped)
{
    if (access(xmllint, X_OK) != 0)
        GTEST_SKIP() << "needs " << xmllint;
    std::string const typed = "Smith & Sons <x> \"q\" 'a' x</FullName><Injected>yes</Injected>"
                              "<FullName>\ttab LF\nCR\rCRLF\r\nend";
    struct Setting
    {
        char const* name;
        std::vector<char const*> paths; // where the value reads back as typed
    };
    // clang-format off
    Setting const settings[] = {
        {"WIMVersion", {"assemblyIdentity/@version"}},
        {"ImageName", {"MetaData/Value"}},
        {"ComputerName", {"ComputerName"}},
        {"FullName", {"UserData/FullName", "RegisteredOwner"}},
        {"OrganizationName", {"UserData/Organization", "RegisteredOrganization"}},
        {"AdminPassword", {"AutoLogon/Password/Value", "AdministratorPassword/Value"}},
        {"AutoLogonCount", {"LogonCount"}},
        {"TimeZone", {"TimeZone"}},
        {"JoinWorkgroup", {"JoinWorkgroup"}},
        {"JoinDomain", {"Identification/JoinDomain"}},
        {"DomainAdmin", {}}, // split into domain and user: below
        {"DomainAdminPassword", {"Credentials/Password"}},
        {"ProductID", {"UserData/ProductKey/Key", "RegisteredOwner/../ProductKey"}},
        {"Language", {"SetupUILanguage/UILanguage", "SetupUILanguage/../UILanguage", "UserLocale",
                      "SystemLocale"}},
        {"Keyboard", {"InputLocale"}},
        {"FirstLogonCommand", {"SynchronousCommand[1]/CommandLine"}},
        {"SNMPMonitor", {"Community_Name", "ValidCommunity[1]/@keyValue"}},
        {"SNMPControl", {"ValidCommunity[2]/@keyValue"}},
        {"SNMPTraps", {"Traps"}},
        {"WMIEnabled", {}}, // decides only
        {"Rotate", {}},     // decides only
    };
    // clang-format on
    for (Setting const& setting : settings)
    {
        Answers answers = newerFamilyFull;
        answers.emplace_back(setting.name, typed);
        ReadBack document(render(Unattend::W2K8, answers));
        ASSERT_TRUE(document.wellFormed()) << setting.name;
        for (char const* path : setting.paths)
            EXPECT_EQ(document.textAt(path), typed) << setting.name << " at " << path;
    }

    Answers answers = newerFamilyFull;
    answers.emplace_back("DomainAdmin", "CORP\\" + typed);
    ReadBack document(render(Unattend::W2K8, answers));
    ASSERT_TRUE(document.wellFormed());
    EXPECT_EQ(document.textAt("Credentials/Domain"), "CORP");
    EXPECT_EQ(document.textAt("Credentials/Username"), "\\" + typed);
}

TEST(XMLAnswerFile, WhatXMLCannotHoldIsBlankedOrDropped)
{
    if (access(xmllint, X_OK) != 0)
        GTEST_SKIP() << "needs " << xmllint;
    // A control character, a stray byte, a 5-byte form, a surrogate, U+FFFE.
    std::string typed = "a\x01"
                        "b\xFF"
                        "c\xF8\x88\x80\x80\x80"
                        "d\xED\xA0\x80"
                        "e\xEF\xBF\xBE"
                        "f caf\xC3\xA9";
    ReadBack document(render(Unattend::W2K8, {{"FullName", typed}, {"SNMPMonitor", typed}}));
    ASSERT_TRUE(document.wellFormed());
    EXPECT_EQ(document.textAt("UserData/FullName"), "a bcde f caf\xC3\xA9");
    EXPECT_EQ(document.textAt("ValidCommunity[1]/@keyValue"), "a bcde f caf\xC3\xA9");
}

// Decisions see the value as typed, not the text it is written as.
TEST(XMLAnswerFile, DecisionsCompareTheTypedValue)
{
    std::string document = render(
        Unattend::W2K8,
        {{"ImageName", "SERVER CO\xFFRE"}, {"Keyboard", "ja-JP\xFF"}, {"WMIEnabled", "Yes\xFF"}});
    EXPECT_TRUE(contains(document, "\"Microsoft-Windows-Foundation-Package\""));
    EXPECT_FALSE(contains(document, "LayeredDriver"));
    EXPECT_TRUE(
        hasLine(document, "            <selection name=\"WMISnmpProvider\" state=\"false\" />"));
}
