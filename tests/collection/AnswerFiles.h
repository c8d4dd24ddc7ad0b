#pragma once

// Helpers of the answer-file tests: answers, page parameters, documents.

#include "ExpectedFiles.h"
#include "collection/Unattend.h"
#include "tests/support/Files.h"
#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

typedef std::vector<std::pair<std::string, std::string>> Answers;

// clang-format off
// Every answer of the older family: the answers of expected/text-full.txt.
Answers const olderFamilyFull = {
    {"ComputerName", "SRV01"}, {"FullName", "Jane Doe"}, {"OrganizationName", "Velmar Ltd"},
    {"AdminPassword", "Secret1"}, {"AutoLogonCount", "2"}, {"TimeZone", "85"},
    {"SkipRegional", "1"}, {"JoinWorkgroup", "WG"}, {"JoinDomain", "corp.local"},
    {"DomainAdmin", "CORP\\admin"}, {"DomainAdminPassword", "Pa55"},
    {"ProductID", "ABCDE-12345-FGHIJ-67890-KLMNO"}, {"AutoMode", "PerServer"}, {"AutoUsers", "25"},
    {"MassStorageDriver", "\"Velmar RAID Controller (Windows 2003)\" = \"OEM\""},
    {"ExtendOemPartition", "1"}, {"FileSystem", "ConvertNTFS"}, {"SNMPMonitor", "public"},
    {"SNMPControl", "private"}, {"SNMPTraps", "10.0.0.5"}, {"R2Run", "1"}, {"Rotate", "1"}};

// Every answer of the newer family: those of expected/xml-full-core-amd64.xml.
Answers const newerFamilyFull = {
    {"WIMVersion", "6.0.6002.18005"}, {"ImageName", "Windows Longhorn SERVERSTANDARDCORE"},
    {"ComputerName", "SRV08"}, {"FullName", "Jane Doe"}, {"OrganizationName", "Velmar Ltd"},
    {"AdminPassword", "Secret1"}, {"AutoLogonCount", "1"}, {"TimeZone", "Tokyo Standard Time"},
    {"JoinDomain", "corp.local"}, {"DomainAdmin", "CORP\\admin"}, {"DomainAdminPassword", "Pa55"},
    {"ProductID", "ABCDE-12345-FGHIJ-67890-KLMNO"}, {"Language", "ja-JP"}, {"Keyboard", "ja-JP"},
    {"FirstLogonCommand", "cmd.exe /c C:\\setup\\first.cmd"}, {"SNMPMonitor", "public"},
    {"SNMPControl", "private"}, {"SNMPTraps", "10.0.0.5"}, {"WMIEnabled", "Yes"}, {"Rotate", "1"}};
// clang-format on

// The page parameters of one request; absent ones read as empty.
struct Query
{
    Common::istring operator()(char const* name) const
    {
        auto found = parameters.find(name);
        return found == parameters.end() ? Common::istring() : found->second.c_str();
    }
    std::map<std::string, std::string> parameters;
};

// The lines of a document whose lines end with CR LF (text after the last too).
inline std::vector<std::string> crlfLines(std::string const& text)
{
    std::vector<std::string> lines;
    std::size_t start = 0, end;
    while ((end = text.find("\r\n", start)) != std::string::npos)
    {
        lines.push_back(text.substr(start, end - start));
        start = end + 2;
    }
    if (start < text.size())
        lines.push_back(text.substr(start));
    return lines;
}

// Compares line by line first, so that a failure names the line.
inline void expectSameDocument(std::string const& actual, std::string const& wanted)
{
    std::vector<std::string> got = crlfLines(actual), want = crlfLines(wanted);
    for (std::size_t i = 0; i < got.size() && i < want.size(); ++i)
        EXPECT_EQ(got[i], want[i]) << "line " << i + 1;
    EXPECT_EQ(got.size(), want.size());
    EXPECT_TRUE(actual == wanted) << "the documents differ in their line ends";
}

// Writes the answers for `os` through Unattend and returns the file's bytes.
inline std::string render(Collection::Unattend::EnUnattendOS os, Answers const& answers)
{
    ScratchFolder dir;
    Collection::Unattend unattend;
    unattend.Load(os);
    for (auto const& answer : answers)
        unattend.Set(answer.first.c_str(), answer.second.c_str());
    EXPECT_TRUE(unattend.writeToFile(dir.path("answers").c_str()));
    return readFile(dir.path("answers"));
}

inline bool hasLine(std::string const& document, std::string const& line)
{
    std::vector<std::string> const lines = crlfLines(document);
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}
