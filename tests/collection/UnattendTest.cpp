#include "AnswerFiles.h"

#include <gtest/gtest.h>

using Collection::Unattend;

TEST(Unattend, KeysIgnoreLetterCaseAndTheLastValueWins)
{
    std::string text = render(Unattend::W2K3, {{"computername", "old"},
                                               {"COMPUTERNAME", "SRV01"},
                                               {"snmpmonitor", "public"},
                                               {"SnmpMonitor", "ro"}});
    EXPECT_TRUE(hasLine(text, "   ComputerName=SRV01"));
    EXPECT_FALSE(hasLine(text, "   ComputerName=old"));
    EXPECT_TRUE(hasLine(text, "   Community_Name=\"ro\""));
    EXPECT_EQ(text.find("public"), std::string::npos);
}

// Load forgets earlier answers; reading a value must not make its key
// present: a second rendering of empty answers still has no SNMP lines,
// specialize pass or join.
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
