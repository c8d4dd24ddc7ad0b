#include "common/GlobalStaticAllocator.h"
#include "common/InputStreamFromBuffer.h"
#include "common/InputStreamFromFile.h"
#include "common/OutputStreamToBuffer.h"
#include "common/OutputStreamToConsole.h"
#include "common/OutputStreamToFile.h"
#include "common/OutputStreamToLog.h"
#include "common/SharedPtr.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using Common::string;

namespace
{
class TempDir
{
public:
    TempDir()
    {
        char pattern[] = "/tmp/tidewell-stream-XXXXXX";
        m_path = mkdtemp(pattern);
    }
    ~TempDir() { std::system(("rm -rf '" + m_path + "'").c_str()); }
    std::string file(char const* name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

void writeFile(std::string const& path, std::string const& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

std::string readFile(std::string const& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string str(string const& s)
{
    return std::string(s.c_str(), s.size());
}
} // namespace

TEST(InputStream, FileIsReadWholeWithEmbeddedNuls)
{
    TempDir dir;
    std::string bytes("head\0middle\r\ntail", 17);
    for (int i = 0; i < 20000; ++i)
        bytes += static_cast<char>(i * 7);
    writeFile(dir.file("data"), bytes);

    Common::shared_ptr<Common::InputStream> in(
        new Common::InputStreamFromFile(dir.file("data").c_str()));
    ASSERT_TRUE(in->isOpen());
    EXPECT_FALSE(in->isEndOfStream());
    string text;
    *in >> text;
    EXPECT_EQ(bytes, str(text));
    EXPECT_TRUE(in->isEndOfStream());
    char c;
    EXPECT_FALSE(in->readCharacter(c));
}

TEST(InputStream, LinesCharactersAndRestMix)
{
    TempDir dir;
    writeFile(dir.file("lines"), "first\r\nsecond\n\nlast");
    Common::InputStreamFromFile file(dir.file("lines").c_str());
    Common::InputStreamFromBuffer buffer(string("first\r\nsecond\n\nlast"));
    Common::InputStream* streams[] = {&file, &buffer};
    for (Common::InputStream* in : streams)
    {
        string line;
        ASSERT_TRUE(in->readLine(line));
        EXPECT_EQ("first", str(line));
        char c = 0;
        ASSERT_TRUE(in->readCharacter(c));
        EXPECT_EQ('s', c);
        ASSERT_TRUE(in->readLine(line));
        EXPECT_EQ("econd", str(line));
        ASSERT_TRUE(in->readLine(line));
        EXPECT_EQ("", str(line));
        string rest;
        ASSERT_TRUE(in->readBuffer(rest));
        EXPECT_EQ("last", str(rest));
        EXPECT_FALSE(in->readLine(line));
        EXPECT_TRUE(in->isEndOfStream());
    }
}

TEST(InputStream, LongLinesSpanTheLookahead)
{
    TempDir dir;
    std::string longLine(10000, 'x');
    writeFile(dir.file("long"), longLine + "\nnext");
    Common::InputStreamFromFile in(dir.file("long").c_str());
    string line;
    ASSERT_TRUE(in.readLine(line));
    EXPECT_EQ(longLine, str(line));
    ASSERT_TRUE(in.readLine(line));
    EXPECT_EQ("next", str(line));
}

TEST(InputStream, MissingFilesAndFoldersDoNotOpen)
{
    TempDir dir;
    Common::InputStreamFromFile missing(dir.file("none").c_str());
    Common::InputStreamFromFile folder(dir.file("").c_str());
    for (Common::InputStreamFromFile* in : {&missing, &folder})
    {
        EXPECT_FALSE(in->isOpen());
        EXPECT_TRUE(in->isEndOfStream());
        string text("unchanged");
        EXPECT_FALSE(in->readBuffer(text));
        EXPECT_EQ("unchanged", str(text));
    }
}

TEST(InputStream, KernelFilesWithoutASizeAreReadToTheEnd)
{
    Common::InputStreamFromFile in("/proc/self/status");
    ASSERT_TRUE(in.isOpen());
    string text;
    ASSERT_TRUE(in.readBuffer(text));
    EXPECT_NE(string::npos, text.find("Name:"));
    EXPECT_NE(string::npos, text.find("Pid:"));
}

TEST(OutputStream, FileReplacesOrAppends)
{
    TempDir dir;
    std::string path = dir.file("out.txt");
    {
        Common::shared_ptr<Common::OutputStream> out(
            new Common::OutputStreamToFile(path.c_str(), false));
        ASSERT_TRUE(out->isOpen());
        *out << string("count=") << 42u << " " << -7 << " " << 18446744073709551615ull;
    }
    EXPECT_EQ("count=42 -7 18446744073709551615", readFile(path));
    {
        Common::OutputStreamToFile out(path.c_str(), true);
        out << Common::istring("+more");
    }
    EXPECT_EQ("count=42 -7 18446744073709551615+more", readFile(path));
    {
        Common::OutputStreamToFile out(path.c_str(), false);
        out << "new";
    }
    EXPECT_EQ("new", readFile(path));

    struct stat info;
    ASSERT_EQ(0, stat(path.c_str(), &info));
    mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(0644u & ~mask, info.st_mode & 0777u);

    Common::OutputStreamToFile nowhere(dir.file("no/such/folder").c_str(), false);
    EXPECT_FALSE(nowhere.isOpen());
    EXPECT_FALSE(nowhere.Accept("x", 1));
}

TEST(OutputStream, BufferCollectsAndLogDiscards)
{
    Common::OutputStreamToBuffer buffer(4);
    buffer << "abc" << string("defgh", 5) << 12u;
    buffer.Accept("\0z", 2);
    EXPECT_EQ(std::string("abcdefgh12\0z", 12), str(buffer.text()));

    Common::OutputStreamToLog log;
    EXPECT_TRUE(log.isOpen());
    EXPECT_TRUE(log.Accept("anything", 8));
}

TEST(Streams, ObjectsComeFromThePool)
{
    Common::shared_ptr<Common::OutputStream> out(new Common::OutputStreamToLog);
    Common::shared_ptr<Common::InputStream> in(new Common::InputStreamFromBuffer(string("x")));
    int segment = -1;
    EXPECT_TRUE(Common::GlobalStaticAllocator::getSegmentFrom(out.get(), segment));
    EXPECT_TRUE(Common::GlobalStaticAllocator::getSegmentFrom(in.get(), segment));
}

TEST(OutputStream, ConsoleWritesPercentSignsAsData)
{
    testing::internal::CaptureStdout();
    Common::OutputStreamToConsole console;
    console << "100% done %s %n";
    EXPECT_EQ("100% done %s %n", testing::internal::GetCapturedStdout());
}
