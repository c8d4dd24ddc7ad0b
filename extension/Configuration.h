#pragma once

#include "common/IString.h"
#include "common/String.h"

// The configuration file "TIDEWELL.XML".
namespace Configuration
{

// Where the configuration file is for a host executable path (backslashes
// count as "/"): beside it when the path contains "iexplore" (any case),
// in its "components/zrmedia/" subfolder when it contains "firefox"; "" when
// there is no configuration file.
Common::string fileFor(const Common::istring& hostPath);

struct Values
{
    Common::string extensionModule; // "ExtensionModule"
    Common::string workingFolder;   // "WorkingDir"
    Common::string contentFolder;   // "UrlBase"
};

// Reads the three entries from the configuration file's text: for each of
// the document element's children "ExtensionModule", "WorkingDir" and
// "UrlBase" (exact tags) that has the attribute "value", that attribute's
// text, with every backslash turned into "/". Entries that are missing stay
// empty.
Values parse(const Common::string& text);

} // namespace Configuration
