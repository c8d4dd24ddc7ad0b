#include "AnswerFiles.h"

#include <gtest/gtest.h>

#include <filesystem>

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

// The platform matches only in exact letter case; any other writes the
// older family's file.
TEST(UnattendPage, EachPlatformWritesItsFamilysFile)
{
    ScratchFolder dir;
    std::string file = dir.path("answers");
    const struct
    {
        char const* platform;
        Answers answers;
        char const* document;
    } cases[] = {
        {"W2K3", olderFamilyFull, "text-full.txt"},
        {"W2K3_X64", {}, "text-empty.txt"},
        {"W2K8", {}, "xml-empty-x86.xml"},
        {"W2K8_X64", newerFamilyFull, "xml-full-core-amd64.xml"},
        {"w2k8", newerFamilyFull, "text-empty.txt"},
        {"W2k8_x64", newerFamilyFull, "text-empty.txt"},
        {"", newerFamilyFull, "text-empty.txt"},
        {"W2K8 ", newerFamilyFull, "text-empty.txt"},
        // An empty parameter is not stored: SNMP stays off.
        {"W2K3", {{"SNMPMonitor", ""}, {"SNMPTraps", ""}}, "text-empty.txt"},
    };
    for (auto const& c : cases)
    {
        EXPECT_EQ(page(c.platform, c.answers, file), '0') << c.platform;
        expectSameDocument(readFile(file), expected(c.document));
    }
    // Empty ImageName and ComputerName take the defaults, as absent ones do.
    page("W2K8", {{"ImageName", ""}, {"ComputerName", ""}, {"SNMPMonitor", "public"}}, file);
    EXPECT_TRUE(hasLine(readFile(file), "            <ComputerName>*</ComputerName>"));
    EXPECT_TRUE(hasLine(readFile(file), "                            <Value>Windows Longhorn "
                                        "SERVERENTERPRISE</Value>"));
}

TEST(UnattendPage, ReplacesAnExistingFileWithMode0644OrAnswersOne)
{
    ScratchFolder dir;
    std::string file = dir.path("answers");
    std::ofstream(file) << std::string(20000, 'x');
    mode_t previous = umask(022);
    EXPECT_EQ(page("W2K3", {}, file), '0');
    EXPECT_EQ(page("W2K3", {}, dir.path("fresh")), '0');
    umask(previous);
    expectSameDocument(readFile(file), expected("text-empty.txt"));
    EXPECT_EQ(std::filesystem::status(dir.path("fresh")).permissions(), std::filesystem::perms(0644));

    EXPECT_EQ(page("W2K8", {}, dir.path()), '1');
    EXPECT_EQ(page("W2K3", {}, dir.path("missing/answers")), '1');
    EXPECT_EQ(page("W2K3", {}, ""), '1');
    EXPECT_FALSE(std::filesystem::exists(dir.path("missing")));
}

// Load forgets earlier answers; a second rendering of empty answers still
// has no SNMP lines, specialize pass or join (reading keeps keys absent).
TEST(Unattend, LoadForgetsEarlierAnswersAndWritingAgainGivesTheSameFile)
{
    for (auto os : {Unattend::W2K3, Unattend::W2K8})
    {
        ScratchFolder dir;
        Unattend unattend;
        unattend.Set("ComputerName", "SRV01");
        unattend.Load(os == Unattend::W2K3 ? Unattend::W2K8 : Unattend::W2K3);
        unattend.Load(os);
        ASSERT_TRUE(unattend.writeToFile(dir.path("answers").c_str()));
        ASSERT_TRUE(unattend.writeToFile(dir.path("answers").c_str()));
        expectSameDocument(readFile(dir.path("answers")),
                           expected(os == Unattend::W2K3 ? "text-empty.txt" : "xml-empty-x86.xml"));
    }
}
