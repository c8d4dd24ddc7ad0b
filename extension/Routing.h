#pragma once

#include "common/IString.h"
#include "common/String.h"

// The URL handling of the entry point (steps 3 to 10 and the PHP
// test of step 12), as functions of their inputs so that each step can be
// tested on its own.
namespace Routing
{

struct Target
{
    Common::istring page;  // the normalised URL: what the processor and the files see
    Common::istring query; // the raw query (undecoded); "" when the URL has no "?"
};

// Steps 3 to 9, in this order: cut at the first "#"; the query is what
// follows the first "?", and every copy of "?" + query is removed from the
// URL; NSP::decode; strip "zrmedia://" (any case); strip the word "Tidewell"
// (any case); strip one leading "/"; an empty result becomes "index.nsp".
// Linear in the URL's length.
Target normalise(const Common::istring& url);

struct FilePath
{
    Common::string path;      // content folder + page
    Common::string folder;    // path up to and including its last "/" ("" without one)
    Common::string name;      // what follows the folder
    Common::string extension; // what follows the last "." of the name ("" without one)
};

// Step 10: the file that a page names in the content folder.
FilePath fileFor(const Common::string& contentFolder, const Common::istring& page);

// Step 12's test: longer than 4 characters, and the first ".php" (any case)
// starts exactly 4 characters before the end ("a.php.php" is no PHP page).
bool isPHP(const Common::istring& page);

// Step 14's test: the extension is "htm" or "html" (any case).
bool expandsIncludes(const Common::string& extension);

} // namespace Routing
