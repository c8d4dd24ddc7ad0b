#include "common/filesystem/Filesystem.h"
#include "common/filesystem/Path.h"

#include "ScratchFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = Common::Filesystem;
using Common::string;
using Set = std::multiset<std::string>;

TEST(Filesystem, TellsFilesFoldersAndLinksApart)
{
    ScratchFolder scratch;
    scratch.write("file", "x");
    scratch.makeFolder("folder");
    std::filesystem::create_symlink(scratch.path("file"), scratch.path("link"));
    std::filesystem::create_symlink(scratch.path("gone"), scratch.path("dangling"));
    ASSERT_EQ(0, ::mkfifo(scratch.path("fifo").c_str(), 0600));

    EXPECT_TRUE(fs::isFile(scratch.at("file")));
    EXPECT_TRUE(fs::isFile(scratch.at("folder"))); // a folder opens for reading too
    EXPECT_TRUE(fs::isFile(scratch.at("link")));
    EXPECT_TRUE(fs::isFile(scratch.at("fifo"))); // answers without waiting for a writer
    EXPECT_FALSE(fs::isFile(scratch.at("missing")));
    EXPECT_FALSE(fs::isFile(scratch.at("dangling")));

    EXPECT_TRUE(fs::isDirectory(""));
    EXPECT_TRUE(fs::isDirectory(scratch.at("folder")));
    EXPECT_TRUE(fs::isDirectory(scratch.at("folder/")));
    EXPECT_FALSE(fs::isDirectory(scratch.at("file")));
    EXPECT_FALSE(fs::isDirectory(scratch.at("missing")));

    EXPECT_TRUE(fs::isSymbolicLink(scratch.at("link")));
    EXPECT_TRUE(fs::isSymbolicLink(scratch.at("dangling")));
    EXPECT_FALSE(fs::isSymbolicLink(scratch.at("file")));
    EXPECT_FALSE(fs::isSymbolicLink(scratch.at("folder")));
    EXPECT_FALSE(fs::isSymbolicLink(scratch.at("missing")));
}

TEST(Filesystem, ReadsContentsAndSizes)
{
    ScratchFolder scratch;
    std::string bytes("one\0two\r\nthree", 14);
    scratch.write("file", bytes);
    scratch.makeFolder("folder");
    std::filesystem::create_symlink(scratch.path("file"), scratch.path("link"));

    string text("untouched");
    ASSERT_TRUE(fs::getContents(scratch.at("file"), text));
    EXPECT_EQ(bytes, std::string(text.c_str(), text.size()));
    text = "untouched";
    EXPECT_FALSE(fs::getContents(scratch.at("missing"), text));
    EXPECT_FALSE(fs::getContents(scratch.at("folder"), text));
    ASSERT_EQ(0, ::mkfifo(scratch.path("fifo").c_str(), 0600));
    EXPECT_FALSE(fs::getContents(scratch.at("fifo"), text)); // no writer: would wait
    EXPECT_FALSE(fs::getContents("/dev/zero", text));        // would never end
    EXPECT_EQ(string("untouched"), text);

    EXPECT_EQ(14, fs::getFileSize(scratch.at("file")));
    EXPECT_EQ(14, fs::getFileSize(scratch.at("link")));
    ASSERT_TRUE(fs::getContents(scratch.at("link"), text));
    EXPECT_EQ(14u, text.size());
    EXPECT_EQ(0, fs::getFileSize(scratch.at("missing")));

    // A sparse file beyond 4 GiB: the size needs all 64 bits.
    std::ofstream(scratch.path("huge")).close();
    std::filesystem::resize_file(scratch.path("huge"), 5LL << 30);
    EXPECT_EQ(5LL << 30, fs::getFileSize(scratch.at("huge")));
    EXPECT_TRUE(fs::isFile(scratch.at("huge")));
}

TEST(Filesystem, ListsFilesAndFoldersSeparately)
{
    ScratchFolder scratch;
    scratch.write("top/a.txt", "a");
    scratch.write("top/b.bin", "b");
    scratch.makeFolder("top/sub");
    scratch.makeFolder("top/other");
    std::filesystem::create_symlink(scratch.path("top/sub"), scratch.path("top/to-sub"));
    std::filesystem::create_symlink(scratch.path("top/a.txt"), scratch.path("top/to-a"));
    std::filesystem::create_symlink(scratch.path("nowhere"), scratch.path("top/dangling"));

    Set files{"a.txt", "b.bin", "to-a"};
    Set folders{"sub", "other", "to-sub"};
    EXPECT_EQ(files, asSet(fs::getFileList(scratch.at("top"))));
    EXPECT_EQ(folders, asSet(fs::getDirectoryList(scratch.at("top"))));
    // Doubled and trailing slashes make no difference.
    EXPECT_EQ(files, asSet(fs::getFileList(scratch.at("//top//"))));
    EXPECT_EQ(folders, asSet(fs::getDirectoryList(scratch.at("top/"))));

    EXPECT_TRUE(fs::getFileList(scratch.at("missing")).empty());
    EXPECT_TRUE(fs::getDirectoryList(scratch.at("missing")).empty());
    EXPECT_TRUE(fs::getDirectoryList(scratch.at("top/sub")).empty()); // no "." or ".."
    EXPECT_TRUE(fs::getFileList(scratch.at("top/a.txt")).empty());
}

TEST(Filesystem, DeletesSingleEntries)
{
    ScratchFolder scratch;
    scratch.write("file", "x");
    scratch.write("full/inside", "x");
    scratch.makeFolder("empty");
    scratch.makeFolder("empty2");

    EXPECT_TRUE(fs::deleteFile(scratch.at("//file")));
    EXPECT_FALSE(scratch.exists("file"));
    EXPECT_FALSE(fs::deleteFile(scratch.at("file")));
    EXPECT_TRUE(fs::deleteFile(scratch.at("empty2"))); // an empty folder is an entry too

    EXPECT_TRUE(fs::deleteDirectory(scratch.at("empty")));
    EXPECT_FALSE(scratch.exists("empty"));
    EXPECT_FALSE(fs::deleteDirectory(scratch.at("full")));
    EXPECT_TRUE(scratch.exists("full/inside"));
    EXPECT_FALSE(fs::deleteDirectory(scratch.at("missing")));
}

// A readable folder opens as a file, so remove hands it to deleteFile: it goes
// only when empty. (Emptying folder by folder happens only for folders that do
// not open for reading, which cannot be made when the tests run as root.)
TEST(Filesystem, RemoveDeletesFilesAndEmptyFolders)
{
    ScratchFolder scratch;
    scratch.write("file", "x");
    scratch.write("win/file", "x");
    scratch.makeFolder("empty");
    scratch.write("full/sub/inside", "x");

    EXPECT_TRUE(fs::remove(scratch.at("file")));
    EXPECT_FALSE(scratch.exists("file"));
    EXPECT_TRUE(fs::remove(scratch.at("win") + "\\\\file")); // backslashes are separators
    EXPECT_FALSE(scratch.exists("win/file"));
    EXPECT_TRUE(fs::remove(scratch.at("empty")));
    EXPECT_FALSE(scratch.exists("empty"));

    EXPECT_FALSE(fs::remove(scratch.at("full")));
    EXPECT_TRUE(scratch.exists("full/sub/inside"));
    EXPECT_FALSE(fs::remove(scratch.at("missing")));
}

TEST(Filesystem, CreateDirectoryMakesMissingParents)
{
    ScratchFolder scratch;
    EXPECT_TRUE(fs::createDirectory(scratch.at("a/b/c")));
    EXPECT_TRUE(std::filesystem::is_directory(scratch.path("a/b/c")));
    EXPECT_TRUE(fs::createDirectory(scratch.at("a/b/c"))); // already there
    EXPECT_TRUE(fs::createDirectory(scratch.at("win") + "\\deep\\\\er/"));
    EXPECT_TRUE(std::filesystem::is_directory(scratch.path("win/deep/er")));
    EXPECT_TRUE(fs::createDirectory(scratch.at("//twice//slashed")));
    EXPECT_TRUE(std::filesystem::is_directory(scratch.path("twice/slashed")));
    EXPECT_TRUE(fs::createDirectory("/"));

    // A relative path is created in the working folder.
    char previous[4096];
    ASSERT_NE(nullptr, ::getcwd(previous, sizeof previous));
    ASSERT_EQ(0, ::chdir(scratch.path().c_str()));
    EXPECT_TRUE(fs::createDirectory("x"));
    EXPECT_TRUE(fs::createDirectory("y/z"));
    ASSERT_EQ(0, ::chdir(previous));
    EXPECT_TRUE(std::filesystem::is_directory(scratch.path("x")));
    EXPECT_TRUE(std::filesystem::is_directory(scratch.path("y/z")));
}

// A regular file where a parent folder should be cannot be turned into a
// folder (permission bits would do as well, but the tests run as root, who
// may write anywhere). The call gives up instead of retrying forever.
TEST(Filesystem, CreateDirectoryFailsWhenAParentCannotBeMade)
{
    ScratchFolder scratch;
    scratch.write("plain", "x");
    EXPECT_FALSE(fs::createDirectory(scratch.at("plain/child")));
    EXPECT_FALSE(fs::createDirectory(scratch.at("plain/child/grandchild/more")));
    EXPECT_EQ("x", scratch.read("plain"));
    // The last name alone being a file is no parent problem: mkdir just fails.
    EXPECT_TRUE(fs::createDirectory(scratch.at("plain")));
    EXPECT_FALSE(std::filesystem::is_directory(scratch.path("plain")));
}

TEST(Filesystem, PathTextHelpers)
{
    string path("a/b");
    EXPECT_EQ(string("a/b/"), fs::_addSlash(path));
    EXPECT_EQ(string("a/b/"), path);
    EXPECT_EQ(string("a/b/"), fs::_addSlash(path));
    string empty;
    EXPECT_EQ(string("/"), fs::_addSlash(empty));
    EXPECT_EQ(string("/a/b/c/"), fs::_collapseSlashes("///a//b////c//"));
    EXPECT_EQ(string("a/b/c"), fs::_forwardSlashes("a\\b\\c"));
}
