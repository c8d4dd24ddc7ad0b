#include "TestSupport.h"

#include "extension/ZRAPPExtension.h"
#include "sim/SimulatedHardware.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <unistd.h>

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

TempDir::TempDir(const char* tag)
{
    const char* tmp = std::getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/" + tag + "-XXXXXX";
    if (::mkdtemp(&pattern[0]) == nullptr)
        std::abort();
    m_path = pattern;
}

TempDir::~TempDir()
{
    std::string command = "rm -rf '" + m_path + "'";
    if (std::system(command.c_str()) != 0)
        std::fprintf(stderr, "could not remove %s\n", m_path.c_str());
}

void writeFile(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    if (!out)
        ADD_FAILURE() << "cannot write " << path;
}

std::string readFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

bool exists(const std::string& path)
{
    struct stat info;
    return ::stat(path.c_str(), &info) == 0;
}

void makeDirectories(const std::string& path)
{
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1))
        ::mkdir(path.substr(0, slash).c_str(), 0755);
    ::mkdir(path.c_str(), 0755);
}

namespace
{
struct Folders
{
    TempDir* host = nullptr;
    TempDir* content = nullptr;
    std::string contentWithSlash;
};

Folders& folders()
{
    static Folders instance;
    return instance;
}

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
        Folders& f = folders();
        f.host = new TempDir("tidewell-host");
        f.content = new TempDir("tidewell-content");
        f.contentWithSlash = f.content->path() + "/";
        writeFile(f.host->file("TIDEWELL.XML"),
                  "<?xml version=\"1.0\"?>\n<TIDEWELL>\n"
                  "  <ExtensionModule value=\"C:\\tidewell\\libtidewell.so\"/>\n"
                  "  <WorkingDir value=\"" +
                      f.host->path() +
                      "\"/>\n"
                      "  <UrlBase value=\"" +
                      f.contentWithSlash + "\"/>\n</TIDEWELL>\n");
        ::setenv("_", f.host->file("iexplore").c_str(), 1);
    }
    void TearDown() override
    {
        Folders& f = folders();
        delete f.content;
        delete f.host;
        f.content = f.host = nullptr;
    }
};

::testing::Environment* const g_environment =
    ::testing::AddGlobalTestEnvironment(new HostEnvironment);
} // namespace

const std::string& hostFolder()
{
    return folders().host->path();
}

const std::string& contentFolder()
{
    return folders().contentWithSlash;
}

void putContent(const std::string& name, const std::string& bytes)
{
    std::string path = contentFolder() + name;
    size_t slash = path.rfind('/');
    makeDirectories(path.substr(0, slash));
    writeFile(path, bytes);
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
