#include "common/filesystem/TemporaryFile.h"

#include "ScopedEnvironment.h"
#include "ScratchFolder.h"

#include <gtest/gtest.h>

namespace fs = Common::Filesystem;
using Common::string;

namespace
{
std::string text(string const& s)
{
    return std::string(s.c_str(), s.size());
}
} // namespace

TEST(TemporaryFile, NamesAFreshFileInTmp)
{
    ScopedEnvironment noTmpdir("TMPDIR", nullptr);
    fs::TemporaryFile plain("", true);
    fs::TemporaryFile withExtension("txt", true);
    fs::TemporaryFile another("", true);

    EXPECT_EQ(0u, text(plain.name()).rfind("/tmp/file", 0)) << text(plain.name());
    EXPECT_GT(plain.name().size(), string("/tmp/file").size());
    EXPECT_EQ(string::npos, plain.name().find(".", 5));
    EXPECT_EQ(0u, text(withExtension.name()).rfind("/tmp/file", 0));
    EXPECT_EQ(withExtension.name().size() - 4, withExtension.name().find(".txt"));
    EXPECT_NE(plain.name(), another.name());
    // Only a name: no file is made.
    EXPECT_FALSE(std::filesystem::exists(text(plain.name())));
    EXPECT_FALSE(std::filesystem::exists(text(withExtension.name())));
}

TEST(TemporaryFile, RemovesItsFileOnlyWhenAskedTo)
{
    std::string removed;
    std::string kept;
    {
        fs::TemporaryFile goes("log", true);
        fs::TemporaryFile stays("log", false);
        removed = text(goes.name());
        kept = text(stays.name());
        std::ofstream(removed) << "x";
        std::ofstream(kept) << "x";
    }
    EXPECT_FALSE(std::filesystem::exists(removed));
    EXPECT_TRUE(std::filesystem::exists(kept));
    std::filesystem::remove(kept);

    // Nothing under the name: destruction is harmless.
    {
        fs::TemporaryFile unused("", true);
    }
}
