#include "common/ModuleName.h"

#include <gtest/gtest.h>

#include <string>

TEST(ModuleName, TakenFromTheShellsUnderscoreAndTheWorkingFolderThenCached)
{
    char const* const cases[][3] = {
        {nullptr, "/work", "/tmp/application.exe"},
        {"/opt/ui/iexplore", "/work", "/opt/ui/iexplore"},
        {"bin/iexplore", "/work", "/work/bin/iexplore"},
        {"./iexplore", "/work", "/work/./iexplore"}, // only the exact value "./" is shortened
        {"./", "/work", "/work/"},
        {"", "/work", "/work/"},
        {"x", nullptr, "/x"}};
    for (auto const& c : cases)
        EXPECT_EQ(c[2], std::string(Common::ModuleName::derive(c[0], c[1]).c_str())) << c[0];

    std::string const first = Common::moduleName().c_str();
    ::setenv("_", "/somewhere/else", 1);
    EXPECT_EQ(first, Common::moduleName().c_str());
}
