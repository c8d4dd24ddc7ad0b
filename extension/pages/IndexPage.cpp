#include "extension/pages/IndexPage.h"

#include "common/filesystem/Filesystem.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"

#include <cstdio>

namespace
{
#ifdef TIDEWELL_TEST_SEAMS
Common::string& markerRoot()
{
    static Common::string root;
    return root;
}
#endif

Common::string markerPath(const char* path)
{
#ifdef TIDEWELL_TEST_SEAMS
    return markerRoot() + path;
#else
    return Common::string(path);
#endif
}

const char* const kInstallMarkers[] = {
    "/tmp/install.xml",
    "/mnt/bootdevice/install.xml",
    "/mnt/automation/install.xml",
};
const char* const kRotateMarker = "/mnt/automation/rotate.txt";
} // namespace

#ifdef TIDEWELL_TEST_SEAMS
void Pages::Testing::SetIndexMarkerRoot(const Common::string& prefix)
{
    markerRoot() = prefix;
}
#endif

// "index.nsp": redirects the user interface to the automation
// page when an answer file is present, else to the rotation page when the
// rotation marker is, else to the language selection. Query parameters are
// ignored.
void Pages::Index(NSP& nsp)
{
    nsp.HTMLHeader("Tidewell");
    bool automate = false;
    for (unsigned i = 0; i < sizeof kInstallMarkers / sizeof kInstallMarkers[0] && !automate; ++i)
        automate = Common::Filesystem::isFile(markerPath(kInstallMarkers[i]));
    if (automate)
        nsp.response().Write(
            "<script type=\"text/JavaScript\">window.location = '/automate.htm';</script>");
    else if (Common::Filesystem::isFile(markerPath(kRotateMarker)))
        nsp.response().Write(
            "<script type=\"text/JavaScript\">window.location = '/rotate.htm';</script>");
    else
        nsp.response().Write(
            "<script type=\"text/JavaScript\">window.location = '/langsel.htm';</script>");
    nsp.HTMLFooter();
}
