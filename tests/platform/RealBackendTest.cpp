#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace
{
// A copy of the probe in a directory every user can enter.
class PublicCopy
{
public:
    explicit PublicCopy(fs::path const& program)
    {
        std::string pattern = (fs::temp_directory_path() / "tidewell-probe-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr)
            return;
        m_directory = pattern;
        fs::permissions(m_directory, fs::perms::owner_all | fs::perms::group_read |
                                         fs::perms::group_exec | fs::perms::others_read |
                                         fs::perms::others_exec);
        m_program = m_directory / program.filename();
        fs::copy_file(program, m_program);
    }
    ~PublicCopy()
    {
        std::error_code ignored;
        fs::remove_all(m_directory, ignored);
    }
    fs::path const& program() const { return m_program; }

private:
    fs::path m_directory;
    fs::path m_program;
};

std::string run(std::string const& command, int& status)
{
    std::string output;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr)
        return output;
    char chunk[256];
    while (std::fgets(chunk, sizeof chunk, pipe) != nullptr)
        output += chunk;
    status = ::pclose(pipe);
    return output;
}
} // namespace

// The product's real backend, run where it has no privileges (as "nobody"
// when the tests run as root): nothing is found and nothing crashes. The
// probe never runs with I/O privilege, so no port instruction executes.
TEST(RealBackend, WithoutPrivilegesFindsNoSmbiosAndNoPciFunction)
{
    PublicCopy probe(REAL_BACKEND_PROBE);
    ASSERT_FALSE(probe.program().empty());
    std::string command = probe.program().string();
    if (::geteuid() == 0)
    {
        int found = std::system("command -v setpriv >/dev/null 2>&1");
        ASSERT_EQ(0, found) << "setpriv (util-linux) is needed to drop root";
        command = "setpriv --reuid=nobody --regid=nogroup --clear-groups " + command;
    }
    int status = -1;
    std::string output = run(command + " 2>&1", status);
    ASSERT_TRUE(WIFEXITED(status)) << output;
    ASSERT_EQ(0, WEXITSTATUS(status)) << output;
    for (char const* line : {"memory read: no\n", "smbios supported: no\n", "total ram: 0\n",
                             "pci functions: 0\n", "nvram supported: no\n", "nvram signature: no\n",
                             "port 0x80: true ff\n"})
        EXPECT_NE(std::string::npos, output.find(line)) << output;

    // The same files as the kernel shows this test, "." and ".." left out.
    std::size_t entries = 0;
    for (auto it = fs::directory_iterator("/proc/self"); it != fs::directory_iterator(); ++it)
        ++entries;
    EXPECT_NE(std::string::npos,
              output.find("/proc/self entries: " + std::to_string(entries) + "\n"))
        << output;
    std::ifstream devices("/proc/devices");
    std::string text((std::istreambuf_iterator<char>(devices)), std::istreambuf_iterator<char>());
    EXPECT_NE(std::string::npos, output.find("/proc/devices: " + std::to_string(text.size()) + " bytes\n"))
        << output;
}
