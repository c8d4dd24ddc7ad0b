#pragma once

// The entry point's process-wide state, for the engine's own
// files and its tests. Created empty when the library is loaded.

#include "common/String.h"

// The page text of the current request, lent to the host.
extern Common::string g_stream;
// "ExtensionModule" of the configuration file; kept, not otherwise used.
extern Common::string g_extensionModule;
// "WorkingDir"; kept, not otherwise used.
extern Common::string g_workingFolder;
// "UrlBase": the folder that URLs are resolved against ("" without one).
extern Common::string g_contentFolder;
