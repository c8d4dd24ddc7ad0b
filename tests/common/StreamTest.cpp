#include "common/InputStreamFromBuffer.h"
#include "common/InputStreamFromFile.h"
#include "common/OutputStreamToBuffer.h"
#include "common/OutputStreamToConsole.h"
#include "common/OutputStreamToFile.h"
#include "common/OutputStreamToLog.h"
#include "common/SharedPtr.h"
#include "tests/common/PoolTestSupport.h"
#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using Common::string;

namespace
{

TEST(InputStream, FilesAndBuffersGiveCharactersLinesAndTheRestAlike)
{
    ScratchFolder scratch;
    std::string const lines = "first\r\nsecond\n\n" + std::string(10000, 'x') + "\nlast";
    scratch.write("lines", lines);
    Common::shared_ptr<Common::InputStream> file(
        new Common::InputStreamFromFile(scratch.at("lines"))); // from the pool
    EXPECT_TRUE(PoolTest::inPool(file.get()));
    Common::InputStreamFromBuffer buffer(string(lines.c_str()));
    for (Common::InputStream* in : std::initializer_list<Common::InputStream*>{file.get(), &buffer})
    {
        string line, rest;
        char c = 0;
        ASSERT_TRUE(in->readLine(line) && in->readCharacter(c));
        EXPECT_EQ("first", text(line));
        EXPECT_EQ('s', c);
        ASSERT_TRUE(in->readLine(line));
        EXPECT_EQ("econd", text(line));
        ASSERT_TRUE(in->readLine(line) && in->readLine(rest)); // an empty line, then a long one
        EXPECT_EQ("", text(line));
        EXPECT_EQ(std::string(10000, 'x'), text(rest));
        *in >> rest;
        EXPECT_EQ("last", text(rest));
        EXPECT_FALSE(in->readLine(line) || in->readCharacter(c));
        EXPECT_TRUE(in->isEndOfStream());
    }
}

TEST(OutputStream, AFileIsReplacedOrAppendedToAndOtherTargetsTakeNulsAndPercentSignsAsData)
{
    ScratchFolder scratch;
    {
        Common::OutputStreamToFile out(scratch.at("out.txt"), false);
        out << string("count=") << 42u << " " << -7 << " " << 18446744073709551615ull;
    }
    Common::OutputStreamToFile(scratch.at("out.txt"), true) << Common::istring("+more");
    EXPECT_EQ("count=42 -7 18446744073709551615+more", scratch.read("out.txt"));
    Common::OutputStreamToFile(scratch.at("out.txt"), false) << "new";
    EXPECT_EQ("new", scratch.read("out.txt"));
    struct stat info;
    ASSERT_EQ(0, stat(scratch.path("out.txt").c_str(), &info));
    mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(0644u & ~mask, info.st_mode & 0777u);

    Common::OutputStreamToBuffer buffer(4);
    buffer << "abc" << string("defgh", 5) << 12u;
    buffer.Accept("\0z", 2);
    EXPECT_EQ(std::string("abcdefgh12\0z", 12), text(buffer.text()));
    Common::OutputStreamToLog log;
    EXPECT_TRUE(log.isOpen() && log.Accept("anything", 8));
    testing::internal::CaptureStdout();
    Common::OutputStreamToConsole() << "100% done %s %n";
    EXPECT_EQ("100% done %s %n", testing::internal::GetCapturedStdout());
}

} // namespace
