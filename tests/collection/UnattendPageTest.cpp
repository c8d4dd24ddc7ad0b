#include "AnswerFiles.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using Collection::Unattend;

namespace
{
// Runs the page with `parameters`, writing to `filename`; the ReturnCode.
char page(std::string const& platform, Answers const& parameters, std::string const& filename)
{
    Query query{{parameters.begin(), parameters.end()}};
    query.parameters["Platform"] = platform;
    query.parameters["Filename"] = filename;
    return Unattend::WriteFromRequest(query);
}
} // namespace

TEST(UnattendPage, EachPlatformWritesItsFamilysFile)
{
    TempDir dir;
    std::string file = dir.file("answers");
    EXPECT_EQ(page("W2K3", olderFamilyFull, file), '0');
    expectSameDocument(readFile(file), expected("text-full.txt"));
    EXPECT_EQ(page("W2K3_X64", {}, file), '0');
    expectSameDocument(readFile(file), expected("text-empty.txt"));
    EXPECT_EQ(page("W2K8", {}, file), '0');
    expectSameDocument(readFile(file), expected("xml-empty-x86.xml"));
    EXPECT_EQ(page("W2K8_X64", newerFamilyFull, file), '0');
    expectSameDocument(readFile(file), expected("xml-full-core-amd64.xml"));
}

TEST(UnattendPage, PlatformMatchesOnlyInExactLetterCase)
{
    TempDir dir;
    std::string file = dir.file("answers");
    for (char const* platform : {"w2k8", "W2k8_x64", "w2k3", "", "W2K8 ", "Linux"})
    {
        EXPECT_EQ(page(platform, newerFamilyFull, file), '0') << platform;
        expectSameDocument(readFile(file), expected("text-empty.txt"));
    }
}

TEST(UnattendPage, EmptyParametersAreNotStored)
{
    TempDir dir;
    std::string file = dir.file("answers");
    // Empty ImageName and ComputerName take the defaults, as absent ones do.
    page("W2K8", {{"ImageName", ""}, {"ComputerName", ""}, {"SNMPMonitor", "public"}}, file);
    EXPECT_TRUE(hasLine(readFile(file), "            <ComputerName>*</ComputerName>"));
    EXPECT_TRUE(hasLine(readFile(file), "                            <Value>Windows Longhorn "
                                        "SERVERENTERPRISE</Value>"));
    // An empty SNMPMonitor does not switch SNMP on.
    page("W2K3", {{"SNMPMonitor", ""}, {"SNMPTraps", ""}}, file);
    expectSameDocument(readFile(file), expected("text-empty.txt"));
}

TEST(UnattendPage, UnwritableFileAnswersOne)
{
    TempDir dir;
    EXPECT_EQ(page("W2K8", {}, dir.path()), '1');
    EXPECT_EQ(page("W2K3", {}, dir.file("missing/answers")), '1');
    EXPECT_EQ(page("W2K3", {}, ""), '1');
    struct stat info;
    EXPECT_NE(stat(dir.file("missing").c_str(), &info), 0);
}

TEST(UnattendPage, ReplacesAnExistingFileWithMode0644)
{
    TempDir dir;
    std::string file = dir.file("answers");
    std::ofstream(file) << std::string(20000, 'x');
    mode_t previous = umask(022);
    EXPECT_EQ(page("W2K3", {}, file), '0');
    EXPECT_EQ(page("W2K3", {}, dir.file("fresh")), '0');
    umask(previous);
    expectSameDocument(readFile(file), expected("text-empty.txt"));
    struct stat info;
    ASSERT_EQ(stat(dir.file("fresh").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0644u);
}
