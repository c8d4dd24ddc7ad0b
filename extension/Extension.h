#pragma once

// The entry point's process-wide state, for the engine's own
// files and its tests. Created empty when the library is loaded.

#include "common/String.h"

// The page buffer: the page text of the current request. Emptied when a
// request comes in, filled by a command page (through NSPResponse::Flush) or
// by file serving, then lent to the host, which reads it until its next call.
// Beware: anything that keeps a pointer into it loses it on the next request.
extern Common::string g_stream;
// "ExtensionModule" of the configuration file; kept, not otherwise used.
extern Common::string g_extensionModule;
// "WorkingDir"; kept, not otherwise used.
extern Common::string g_workingFolder;
// "UrlBase": the folder that URLs are resolved against ("" without one).
extern Common::string g_contentFolder;
