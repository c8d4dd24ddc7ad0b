#include "common/ModuleName.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string derive(const char* underscore, const char* cwd)
{
    Common::string name = Common::ModuleName::derive(underscore, cwd);
    return std::string(name.c_str(), name.size());
}
} // namespace

TEST(ModuleName, WithoutUnderscore)
{
    EXPECT_EQ(derive(nullptr, "/work"), "/tmp/application.exe");
}

TEST(ModuleName, AbsoluteAndRelative)
{
    EXPECT_EQ(derive("/opt/ui/iexplore", "/work"), "/opt/ui/iexplore");
    EXPECT_EQ(derive("bin/iexplore", "/work"), "/work/bin/iexplore");
    // Only the exact value "./" is shortened; "./x" keeps its "./".
    EXPECT_EQ(derive("./iexplore", "/work"), "/work/./iexplore");
    EXPECT_EQ(derive("./", "/work"), "/work/");
    EXPECT_EQ(derive("", "/work"), "/work/");
    EXPECT_EQ(derive("x", nullptr), "/x");
}

TEST(ModuleName, CachedForTheProcess)
{
    Common::string first = Common::moduleName();
    ::setenv("_", "/somewhere/else", 1);
    EXPECT_EQ(std::string(Common::moduleName().c_str()), std::string(first.c_str()));
}
