#include "TestSupport.h"

#include "extension/ZRAPPExtension.h"
#include "sim/SimulatedHardware.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#ifdef __SANITIZE_ADDRESS__
// A 32-bit process has little address space beside AddressSanitizer's
// shadow, and the default quarantine of freed memory (256 MiB) exhausts it
// during the soak's long mixed run. ASAN_OPTIONS still overrides this.
extern "C" const char* __asan_default_options()
{
    return "quarantine_size_mb=32";
}
#endif

namespace TestSupport
{

namespace
{
std::unique_ptr<ScratchFolder> g_host;
std::unique_ptr<ScratchFolder> g_content;

// The first request starts the start-up job, which reaches the hardware: in
// these tests it meets an empty simulated server, never the real machine.
// Built before the first request, so it outlives the job (statics are
// destroyed in reverse order, the job's thread first).
Sim::SimulatedHardware& emptyServer()
{
    static Sim::Machine machine;
    static Sim::SimulatedHardware hardware(machine);
    return hardware;
}

class HostEnvironment : public ::testing::Environment
{
public:
    void SetUp() override
    {
        emptyServer().install();
        g_host.reset(new ScratchFolder);
        g_content.reset(new ScratchFolder);
        const std::string working = "<WorkingDir value=\"" + g_host->path() + "\"/>";
        const std::string content = "<UrlBase value=\"" + g_content->path() + "\"/>";
        writeFile(g_host->path("TIDEWELL.XML"),
                  "<?xml version=\"1.0\"?>\n<TIDEWELL>\n"
                  "<ExtensionModule value=\"C:\\tidewell\\libtidewell.so\"/>\n" +
                      working + "\n" + content + "\n</TIDEWELL>\n");
        ::setenv("_", g_host->path("iexplore").c_str(), 1);
    }
    void TearDown() override
    {
        g_content.reset();
        g_host.reset();
    }
};

::testing::Environment* const g_environment =
    ::testing::AddGlobalTestEnvironment(new HostEnvironment);
} // namespace

const std::string& hostFolder()
{
    static const std::string path = g_host->path();
    return path;
}

const std::string& contentFolder()
{
    static const std::string path = g_content->path();
    return path;
}

void putContent(const std::string& name, const std::string& bytes)
{
    EXPECT_TRUE(g_content->write(name, bytes)) << name;
}

Answer get(const std::string& url, const std::string& method)
{
    const char* request[ZRAPP_REQUEST_SLOTS] = {url.c_str(), "", "", method.c_str()};
    uint32_t text = 0;
    uint32_t length = 0xDEADBEEF;
    Answer answer;
    answer.result = ZRAPPExtensionProc(request, &text, &length);
    const char* bytes = reinterpret_cast<const char*>(static_cast<uintptr_t>(text));
    EXPECT_NE(bytes, nullptr);
    EXPECT_NE(length, 0xDEADBEEFu);
    answer.page.assign(bytes ? bytes : "", bytes ? length : 0);
    return answer;
}

} // namespace TestSupport
