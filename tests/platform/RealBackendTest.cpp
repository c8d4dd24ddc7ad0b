#include "tests/support/Files.h"
#include "tests/support/ScratchFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using TestSupport::readFile;

// The product's real backend, run where it has no privileges (as "nobody"
// when the tests run as root): nothing is found and nothing crashes. The
// probe never runs with I/O privilege, so no port instruction executes.
TEST(RealBackend, WithoutPrivilegesFindsNoSmbiosAndNoPciFunction)
{
    // A copy of the probe in a folder every user can enter.
    ScratchFolder folder;
    fs::permissions(folder.path(), fs::perms::others_exec, fs::perm_options::add);
    fs::copy_file(REAL_BACKEND_PROBE, folder.path("probe"));
    std::string command = folder.path("probe");
    if (::geteuid() == 0)
    {
        int found = std::system("command -v setpriv >/dev/null 2>&1");
        ASSERT_EQ(0, found) << "setpriv (util-linux) is needed to drop root";
        command = "setpriv --reuid=nobody --regid=nogroup --clear-groups " + command;
    }
    int status = std::system((command + " >" + folder.path("output") + " 2>&1").c_str());
    std::string output = readFile(folder.path("output"));
    ASSERT_TRUE(WIFEXITED(status)) << output;
    ASSERT_EQ(0, WEXITSTATUS(status)) << output;
    for (char const* line : {"memory read: no\n", "smbios supported: no\n", "total ram: 0\n",
                             "pci functions: 0\n", "nvram supported: no\n", "nvram signature: no\n",
                             "port 0x80: true ff\n"})
        EXPECT_NE(std::string::npos, output.find(line)) << output;

    // The same files as the kernel shows this test, "." and ".." left out.
    auto entries = std::distance(fs::directory_iterator("/proc/self"), fs::directory_iterator());
    EXPECT_NE(std::string::npos,
              output.find("/proc/self entries: " + std::to_string(entries) + "\n"))
        << output;
    std::size_t devices = readFile("/proc/devices").size();
    EXPECT_NE(std::string::npos,
              output.find("/proc/devices: " + std::to_string(devices) + " bytes\n"))
        << output;
}
