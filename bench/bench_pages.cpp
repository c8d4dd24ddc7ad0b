// Page engine figures, through the exported entry point of the dlopen'd
// product module (as the host calls it):
// - a 1 MiB static page against one read(2) of the same file (goal <= 2x),
//   as an ".htm" page (scanned for "<?include") and as a ".txt" file;
// - a page with 100 includes of 1 KiB each against reading its 101 files
//   with read(2) (reported).
#include "BenchTiming.h"

#include "extension/ZRAPPExtension.h"
#include "tests/support/ScratchFolder.h"

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <vector>

#ifndef TIDEWELL_MODULE
#define TIDEWELL_MODULE "libtidewell.so"
#endif

namespace
{
// HTML-like text: tags, blanks and words, but no directive.
std::string htmlText(size_t size)
{
    static const char* const words[] = {"<p>",    "server ",     "setup ",
                                        "</p>\n", "<b>",         "disk ",
                                        "</b> ",  "controller ", "<a href=\"/start.htm\">",
                                        "</a>"};
    std::string text;
    unsigned i = 0;
    while (text.size() < size)
        text += words[(i++ * 7) % 10];
    text.resize(size);
    return text;
}

// The module's entry point; ends the program when it cannot be loaded. The
// module stays loaded until the program ends.
ZRAPPExtensionProcFunction loadModule(const char* path)
{
    void* handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    void* proc = handle ? dlsym(handle, "ZRAPPExtensionProc") : nullptr;
    if (!proc)
    {
        std::fprintf(stderr, "cannot load %s: %s\n", path, dlerror());
        std::exit(1);
    }
    return reinterpret_cast<ZRAPPExtensionProcFunction>(proc);
}
} // namespace

int main()
{
    const ScratchFolder scratch;
    const std::string content = scratch.path("content/");
    scratch.makeFolder("content/part");
    writeFile(scratch.path("TIDEWELL.XML"), "<TIDEWELL><UrlBase value=\"" + content + "\"/></TIDEWELL>");
    setenv("_", scratch.path("iexplore").c_str(), 1);

    const size_t big = 1u << 20;
    writeFile(content + "big.htm", htmlText(big));
    writeFile(content + "big.txt", htmlText(big));

    std::string page;
    std::vector<std::string> files;
    size_t expanded = 0;
    for (int i = 0; i < 100; ++i)
    {
        std::string name = "part/" + std::to_string(i) + ".htm";
        std::string part = htmlText(1024);
        writeFile(content + name, part);
        files.push_back(content + name);
        page += "<div><?include " + name + "?></div>\n";
        expanded += 12 + part.size();
    }
    writeFile(content + "includes.htm", page);
    files.push_back(content + "includes.htm");

    const ZRAPPExtensionProcFunction proc = loadModule(TIDEWELL_MODULE);
    // Serves the URL; aborts unless the page has the expected size.
    auto serve = [proc](const char* url, size_t expected)
    {
        const char* request[ZRAPP_REQUEST_SLOTS] = {url, "", "", "GET"};
        uint32_t text = 0;
        uint32_t length = 0;
        if (proc(request, &text, &length) != 0 || length != expected)
        {
            std::fprintf(stderr, "%s: %u bytes, expected %zu\n", url, length, expected);
            std::abort();
        }
    };
    serve("zrmedia://Tidewell/big.htm", big); // warm up, start-up
    readPlain(content + "big.htm");

    double reference = bestSeconds(200, [&] { readPlain(content + "big.htm"); });
    double ours = bestSeconds(200, [&] { serve("zrmedia://Tidewell/big.htm", big); });
    reportRatio("1 MiB .htm page through ZRAPPExtensionProc vs read(2)", ours, reference, 2.0);

    reference = bestSeconds(200, [&] { readPlain(content + "big.txt"); });
    ours = bestSeconds(200, [&] { serve("zrmedia://Tidewell/big.txt", big); });
    reportRatio("1 MiB .txt file through ZRAPPExtensionProc vs read(2)", ours, reference, 2.0);

    serve("zrmedia://Tidewell/includes.htm", expanded);
    reference = bestSeconds(100,
                            [&]
                            {
                                for (const std::string& file : files)
                                    readPlain(file);
                            });
    ours = bestSeconds(100, [&] { serve("zrmedia://Tidewell/includes.htm", expanded); });
    reportRatio("page with 100 includes of 1 KiB vs read(2) of its 101 files", ours, reference, 0);
    return 0;
}
