// The exported entry point, start-up and the road of one request:
//
//   ZRAPPExtensionProc     starts up once (InitializeLibrary), empties the page buffer g_stream
//   Routing::normalise     URL -> page name + raw query (fragment cut, decoded, prefixes gone)
//   NSP::Execute           a command page (extension/pages/PageTable.cpp) answers into g_stream;
//                          its query is parsed by NSPRequest, its answer flushed by NSPResponse
//   Routing::fileFor       otherwise the page is a file of the content folder (or "/" + page)
//   runPHP                 a ".php" page is the output of "php -f <file>"
//   Includes::expand       an ".htm"/".html" page has its "<?include name?>" directives expanded
//   back in the entry      the host borrows g_stream's text until its next call
//
// One request at a time: nothing on this road takes a lock.

#include "extension/Extension.h"

#include "common/ModuleName.h"
#include "common/ShellQuoted.h"
#include "common/Thread.h"
#include "common/filesystem/Filesystem.h"
#include "common/filesystem/TemporaryFile.h"
#include "extension/BackgroundThread.h"
#include "extension/Configuration.h"
#include "extension/Includes.h"
#include "extension/NSP.h"
#include "extension/Routing.h"
#include "extension/ZRAPPExtension.h"

#include <cstdlib>

#ifdef TIDEWELL_TEST_SEAMS
#include "extension/TestSeams.h"
namespace
{
void (*g_routeHook)(const char* url) = nullptr;
}
void Testing::SetRouteHook(void (*hook)(const char* url))
{
    g_routeHook = hook;
}
#endif

#define TIDEWELL_EXPORT __attribute__((visibility("default")))

Common::string g_stream;
Common::string g_extensionModule;
Common::string g_workingFolder;
Common::string g_contentFolder;

namespace
{
class FileReader : public Includes::Reader
{
public:
    bool read(const Common::string& path, Common::string& text) override
    {
        return Common::Filesystem::getContents(path, text);
    }
};

void startUp()
{
    // The configuration file beside the host executable.
    const Common::string file = Configuration::fileFor(Common::istring(Common::moduleName()));

    // Its three entries (a missing file reads as empty text).
    if (!file.empty())
    {
        Common::string text;
        Common::Filesystem::getContents(file, text);
        Configuration::Values values = Configuration::parse(text);
        g_extensionModule = values.extensionModule;
        g_workingFolder = values.workingFolder;
        g_contentFolder = values.contentFolder;
    }

    // The start-up inventory job, started once; both objects live until the
    // library is unloaded (the thread is joined then).
    static BackgroundThread backgroundThread(g_contentFolder);
    static Common::Synchronization::Thread thread(backgroundThread);
}

// Runs the page through "php"; true when its output could be read.
// Beware: the path comes straight from the URL and goes into a shell command
// line; it must stay quoted as one argument (a URL such as "a;id;.php" would
// otherwise run "id"). The program runs with the host's rights (root on boot
// media).
bool runPHP(const Common::string& path)
{
    Common::Filesystem::TemporaryFile output(Common::string(), true);
    const Common::string command =
        "php -f " + Common::shellQuoted(path) + " > " + Common::shellQuoted(output.name());
    int status = std::system(command.c_str());
    (void)status; // not looked at
    return Common::Filesystem::getContents(output.name(), g_stream);
}

// The page for one URL into g_stream; the result (0 found, 1 not found).
int32_t route(const char* urlText, const char* methodText)
{
#ifdef TIDEWELL_TEST_SEAMS
    if (g_routeHook)
        g_routeHook(urlText);
#endif
    static NSP nspProcessor(&g_stream);

    const Routing::Target target = Routing::normalise(Common::istring(urlText));
    if (nspProcessor.Execute(Common::istring(methodText), target.page, target.query))
        return 0;

    const Routing::FilePath file = Routing::fileFor(g_contentFolder, target.page);
    if (Routing::isPHP(target.page))
        return runPHP(file.path) ? 0 : 1;

    // Beware: a page that is not in the content folder is read by its
    // absolute path, so a URL can fetch any local file the host may read.
    // Only regular files are read (a FIFO or a device would hang the host).
    using Common::Filesystem::getContents;
    if (!getContents(file.path, g_stream) && !getContents("/" + Common::string(target.page), g_stream))
        return 1;

    if (Routing::expandsIncludes(file.extension))
    {
        FileReader reader;
        g_stream = Includes::expand(g_stream, file.folder, g_contentFolder, reader).text;
    }
    return 0;
}
} // namespace

extern "C" TIDEWELL_EXPORT void InitializeLibrary(void)
{
    static bool isInitialized = false;
    if (isInitialized)
        return;
    isInitialized = true;
    try
    {
        startUp();
    }
    catch (...)
    {
        // Nothing reaches the host; what was read so far stays.
    }
}

extern "C" TIDEWELL_EXPORT int32_t ZRAPPExtensionProc(const char* const* request, uint32_t* text,
                                                      uint32_t* length)
{
    static const char kEmpty[] = "";
    int32_t result = 1;
    const char* page = kEmpty;
    uint32_t size = 0;
    try
    {
        InitializeLibrary();
        g_stream.clear();

        // The block is read in order; a null slot ends it.
        const char* url = request ? request[ZRAPP_REQUEST_URL] : nullptr;
        const char* method = "";
        if (url && request[1] && request[2] && request[ZRAPP_REQUEST_METHOD])
            method = request[ZRAPP_REQUEST_METHOD];

        if (url)
            result = route(url, method);
        page = g_stream.c_str();
        size = g_stream.size();
    }
    catch (...)
    {
        // No exception may reach the host: it gets
        // result 1 and an empty page, and the page buffer is emptied if that
        // is still possible.
        result = 1;
        page = kEmpty;
        size = 0;
        try
        {
            g_stream.clear();
            page = g_stream.c_str();
        }
        catch (...)
        {
        }
    }
    if (text)
        *text = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(page));
    if (length)
        *length = size;
    return result;
}
