// tidewell_shell: the module shell, a development stand-in for the browser
// shell that hosts the product module. It loads a module the way the browser
// shell does (dlopen, dlsym "ZRAPPExtensionProc", a request block of four
// string pointers: URL, two unused slots, method) and serves requests with
// it, one at a time.
//
// Usage:
//   tidewell_shell [OPTIONS] CONTENT get URL [METHOD]
//   tidewell_shell [OPTIONS] CONTENT serve
// OPTIONS: --module FILE, --host-dir DIR, --no-config, --simulate FILE
// (below).
//
// CONTENT is the content folder that URLs resolve against. The module finds
// its configuration file through the host executable's path, which it takes
// from the environment variable "_", and reads it only when that
// path contains "iexplore" or "firefox". So the shell plays a host named
// "iexplore" living in DIR: it sets "_" to DIR + "/iexplore" before loading
// the module and writes DIR/TIDEWELL.XML with "UrlBase" set to CONTENT's
// absolute path and a final "/". The module's debug log ("debug.nsp") lands
// in DIR/iexplore_html.log. Without --host-dir, DIR is a fresh temporary
// folder (under $TMPDIR, else /tmp) that is removed when the shell ends.
// --module defaults to the libtidewell.so built together with this shell.
// --no-config writes no configuration file (CONTENT is then not used): the
// module finds none and resolves URLs against the working directory, as a
// host without one would have it.
//
// --simulate FILE runs the simulated module (libtidewell_sim.so, built with
// this shell) against the simulated server that the machine description FILE
// describes (sim/machines/*.xml): the shell hands FILE's absolute path to
// that module in the environment variable TIDEWELL_SIMULATED_MACHINE, which
// only the simulated module reads. --module still overrides the module.
//
// The module's own standard output (the console line of "debug.nsp") is sent
// to the shell's standard error, so that standard output carries pages only.
//
// get: the page on standard output, byte for byte; exit status 0 when the
// module's result is 0, 1 when it is 1.
//
// serve: requests are read from standard input and answered on standard
// output in a length-prefixed framing, one request at a time (a request is
// answered completely before the next one is read):
//   request:  "<METHOD> <N>\n" followed by exactly N bytes: the URL
//   response: "<RESULT> <N>\n" followed by exactly N bytes: the page text
// METHOD is one token of 1 to 32 printable characters other than blank
// (e.g. GET, POST); N is a decimal number of at most 10 digits, with no sign
// and no leading blanks; RESULT is the module's result (0 or 1); each header
// ends with a single line feed (no carriage return). The module sees the URL
// as a C string, so a URL byte 0 ends it. URLs are limited to 64 MiB. End of
// input before a header ends the session (exit status 0); a malformed header
// or a short URL is a protocol error: a message on standard error, exit
// status 2.
//
// Other exit statuses: 2 for a usage or protocol error, 3 when the module
// cannot be set up or loaded.

#include "extension/ZRAPPExtension.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <string>
#include <unistd.h>

#ifndef TIDEWELL_DEFAULT_MODULE
#define TIDEWELL_DEFAULT_MODULE "libtidewell.so"
#endif
#ifndef TIDEWELL_SIMULATED_MODULE
#define TIDEWELL_SIMULATED_MODULE "libtidewell_sim.so"
#endif

namespace
{
const unsigned long kMaxURL = 64ul << 20;
const int kUsage = 2;
const int kSetup = 3;

void usage()
{
    std::fprintf(stderr, "usage: tidewell_shell [OPTIONS] CONTENT get URL [METHOD]\n"
                         "       tidewell_shell [OPTIONS] CONTENT serve\n"
                         "OPTIONS: --module FILE  --host-dir DIR  --no-config  --simulate FILE\n");
}

bool writeAll(int fd, const char* bytes, size_t length)
{
    while (length > 0)
    {
        ssize_t written = ::write(fd, bytes, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        length -= static_cast<size_t>(written);
    }
    return true;
}

bool writeFile(const std::string& path, const std::string& text)
{
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0)
        return false;
    bool ok = writeAll(fd, text.data(), text.size());
    return ::close(fd) == 0 && ok;
}

std::string absolute(const std::string& path)
{
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (resolved == nullptr)
        return std::string();
    std::string result(resolved);
    std::free(resolved);
    return result;
}

// The folder that plays the host executable's folder.
class HostFolder
{
public:
    HostFolder() : m_temporary(false) {}
    ~HostFolder()
    {
        if (!m_temporary)
            return;
        ::unlink((m_path + "/TIDEWELL.XML").c_str());
        ::unlink((m_path + "/iexplore_html.log").c_str());
        ::rmdir(m_path.c_str());
    }

    bool Use(const char* given)
    {
        if (given)
        {
            m_path = absolute(given);
            return !m_path.empty();
        }
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/tidewell-shell-XXXXXX";
        std::string buffer = pattern;
        if (::mkdtemp(&buffer[0]) == nullptr)
            return false;
        m_path = buffer;
        m_temporary = true;
        return true;
    }

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
    bool m_temporary;
};

// Loads the module; the function is null on failure.
class Module
{
public:
    // The module stays loaded for the rest of the shell's life, as a browser
    // keeps its extension: it is not unloaded with dlclose; its objects are
    // destroyed when the process ends. (Unloading would also give up the
    // memory pool's block, which the module never returns: a leak per unload.)
    Module() : m_handle(nullptr), m_proc(nullptr) {}

    bool Load(const char* path)
    {
        m_handle = ::dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (m_handle == nullptr)
        {
            std::fprintf(stderr, "tidewell_shell: cannot load %s: %s\n", path, ::dlerror());
            return false;
        }
        m_proc =
            reinterpret_cast<ZRAPPExtensionProcFunction>(::dlsym(m_handle, "ZRAPPExtensionProc"));
        if (m_proc == nullptr)
        {
            std::fprintf(stderr, "tidewell_shell: %s has no ZRAPPExtensionProc\n", path);
            return false;
        }
        return true;
    }

    // One request; the page is copied out before the next call.
    int32_t Serve(const std::string& url, const std::string& method, std::string& page)
    {
        static const char kUnused[] = "";
        const char* request[ZRAPP_REQUEST_SLOTS] = {url.c_str(), kUnused, kUnused, method.c_str()};
        uint32_t text = 0;
        uint32_t length = 0;
        int32_t result = m_proc(request, &text, &length);
        const char* bytes = reinterpret_cast<const char*>(static_cast<uintptr_t>(text));
        page.assign(bytes && length ? bytes : "", bytes ? length : 0);
        return result;
    }

private:
    void* m_handle;
    ZRAPPExtensionProcFunction m_proc;
};

// Reads exactly `length` bytes; false at a premature end.
bool readExactly(std::FILE* in, std::string& into, unsigned long length)
{
    into.resize(length);
    size_t got = length ? std::fread(&into[0], 1, length, in) : 0;
    return got == length;
}

// Reads one header line "<TOKEN> <N>\n". 0: read, 1: clean end of input,
// -1: malformed.
int readHeader(std::FILE* in, std::string& token, unsigned long& number)
{
    std::string line;
    for (;;)
    {
        int c = std::fgetc(in);
        if (c == EOF)
            return line.empty() ? 1 : -1;
        if (c == '\n')
            break;
        if (line.size() > 64)
            return -1;
        line.push_back(static_cast<char>(c));
    }
    size_t blank = line.find(' ');
    if (blank == std::string::npos || blank == 0 || blank > 32)
        return -1;
    token = line.substr(0, blank);
    for (char c : token)
        if (c <= ' ' || c >= 127)
            return -1;
    std::string digits = line.substr(blank + 1);
    if (digits.empty() || digits.size() > 10)
        return -1;
    number = 0;
    for (char c : digits)
    {
        if (c < '0' || c > '9')
            return -1;
        number = number * 10 + static_cast<unsigned long>(c - '0');
    }
    return 0;
}

int serve(Module& module, std::FILE* in, int out)
{
    for (;;)
    {
        std::string method;
        unsigned long length = 0;
        int header = readHeader(in, method, length);
        if (header == 1)
            return 0;
        if (header < 0 || length > kMaxURL)
        {
            std::fprintf(stderr, "tidewell_shell: malformed request header\n");
            return kUsage;
        }
        std::string url;
        if (!readExactly(in, url, length))
        {
            std::fprintf(stderr, "tidewell_shell: request ended before its %lu URL bytes\n",
                         length);
            return kUsage;
        }
        // The module sees a C string.
        url.resize(std::strlen(url.c_str()));
        std::string page;
        int32_t result = module.Serve(url, method, page);
        char head[32];
        int n = std::snprintf(head, sizeof head, "%d %zu\n", static_cast<int>(result), page.size());
        if (!writeAll(out, head, static_cast<size_t>(n)) ||
            !writeAll(out, page.data(), page.size()))
            return 0; // the reader went away
    }
}
} // namespace

int main(int argc, char** argv)
{
    const char* modulePath = nullptr;
    const char* hostDir = nullptr;
    const char* machineDescription = nullptr;
    bool writeConfiguration = true;
    int i = 1;
    for (; i < argc && std::strncmp(argv[i], "--", 2) == 0; ++i)
    {
        if (std::strcmp(argv[i], "--module") == 0 && i + 1 < argc)
            modulePath = argv[++i];
        else if (std::strcmp(argv[i], "--host-dir") == 0 && i + 1 < argc)
            hostDir = argv[++i];
        else if (std::strcmp(argv[i], "--no-config") == 0)
            writeConfiguration = false;
        else if (std::strcmp(argv[i], "--simulate") == 0 && i + 1 < argc)
            machineDescription = argv[++i];
        else
        {
            usage();
            return kUsage;
        }
    }
    if (argc - i < 2)
    {
        usage();
        return kUsage;
    }
    if (machineDescription != nullptr)
    {
        const std::string description = absolute(machineDescription);
        if (description.empty() ||
            ::setenv("TIDEWELL_SIMULATED_MACHINE", description.c_str(), 1) != 0)
        {
            std::fprintf(stderr, "tidewell_shell: no machine description %s\n", machineDescription);
            return kSetup;
        }
    }
    if (modulePath == nullptr)
        modulePath = machineDescription ? TIDEWELL_SIMULATED_MODULE : TIDEWELL_DEFAULT_MODULE;
    const std::string contentArg = argv[i];
    const std::string command = argv[i + 1];
    const bool get = command == "get" && (argc - i == 3 || argc - i == 4);
    if (!get && !(command == "serve" && argc - i == 2))
    {
        usage();
        return kUsage;
    }

    const std::string content = writeConfiguration ? absolute(contentArg) : contentArg;
    if (content.empty())
    {
        std::fprintf(stderr, "tidewell_shell: no content folder %s\n", contentArg.c_str());
        return kSetup;
    }
    if (writeConfiguration && content.find('"') != std::string::npos)
    {
        std::fprintf(stderr, "tidewell_shell: a content folder path may not hold a '\"'\n");
        return kSetup;
    }

    // Standard output carries pages only; the module's console goes to
    // standard error.
    // The shell's own copies of its request and answer channels are
    // close-on-exec, like every descriptor it opens: a program the module
    // runs inherits standard input, output and error only, so it can neither
    // forge an answer nor read a request.
    std::fflush(stdout);
    int out = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    if (out < 0 || ::dup2(STDERR_FILENO, STDOUT_FILENO) < 0)
    {
        std::fprintf(stderr, "tidewell_shell: cannot set up standard output\n");
        return kSetup;
    }
    // Requests arrive on a descriptor of their own; standard input becomes
    // /dev/null, so that a program the module runs (system.nsp "Run") can
    // neither read the request stream nor wait on it.
    std::FILE* requests = ::fdopen(::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3), "rb");
    int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (requests == nullptr || nothing < 0 || ::dup2(nothing, STDIN_FILENO) < 0)
    {
        std::fprintf(stderr, "tidewell_shell: cannot set up standard input\n");
        return kSetup;
    }
    ::close(nothing);

    HostFolder host;
    if (!host.Use(hostDir))
    {
        std::fprintf(stderr, "tidewell_shell: cannot use host folder %s\n",
                     hostDir ? hostDir : "(temporary)");
        return kSetup;
    }
    const std::string configuration = "<?xml version=\"1.0\"?>\n"
                                      "<TIDEWELL>\n"
                                      "  <ExtensionModule value=\"" +
                                      std::string(modulePath) +
                                      "\"/>\n"
                                      "  <WorkingDir value=\"" +
                                      host.path() +
                                      "\"/>\n"
                                      "  <UrlBase value=\"" +
                                      content +
                                      "/\"/>\n"
                                      "</TIDEWELL>\n";
    if (writeConfiguration && !writeFile(host.path() + "/TIDEWELL.XML", configuration))
    {
        std::fprintf(stderr, "tidewell_shell: cannot write %s/TIDEWELL.XML\n", host.path().c_str());
        return kSetup;
    }
    // The host executable's path, as the module reads it.
    if (::setenv("_", (host.path() + "/iexplore").c_str(), 1) != 0)
        return kSetup;

    int status = 0;
    {
        Module module;
        if (!module.Load(modulePath))
            return kSetup;
        if (get)
        {
            std::string page;
            int32_t result = module.Serve(argv[i + 2], argc - i == 4 ? argv[i + 3] : "GET", page);
            status = writeAll(out, page.data(), page.size()) && result == 0 ? 0 : 1;
        }
        else
        {
            status = serve(module, requests, out);
        }
    }
    ::close(out);
    return status;
}
