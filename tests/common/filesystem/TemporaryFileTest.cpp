#include "common/filesystem/TemporaryFile.h"

#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

namespace fs = Common::Filesystem;

TEST(TemporaryFile, NamesAFreshFileInTmpAndRemovesItWhenAsked)
{
    ::unsetenv("TMPDIR"); // the C library would prefer that folder
    std::string removed;
    std::string kept;
    {
        fs::TemporaryFile goes("", true);
        fs::TemporaryFile stays("log", false);
        removed = text(goes.name());
        kept = text(stays.name());
        EXPECT_EQ(0u, removed.rfind("/tmp/file", 0)) << removed;
        EXPECT_EQ(std::string::npos, removed.find('.'));
        EXPECT_EQ(kept.size() - 4, kept.find(".log"));
        EXPECT_NE(removed, kept.substr(0, kept.size() - 4));
        EXPECT_FALSE(std::filesystem::exists(removed)); // a name only
        std::ofstream(removed) << "x";
        std::ofstream(kept) << "x";
    }
    EXPECT_FALSE(std::filesystem::exists(removed));
    EXPECT_TRUE(std::filesystem::exists(kept));
    std::filesystem::remove(kept);
}
