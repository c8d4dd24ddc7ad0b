#pragma once

#include "common/IString.h"
#include "common/String.h"

// The entry point's URL handling, as functions of their inputs: the URL
// becomes a page name and a query (normalise); a page name that no command
// page takes becomes a file of the content folder (fileFor), read as it is,
// run through "php" (isPHP) or with its includes expanded (expandsIncludes).
namespace Routing
{

struct Target
{
    Common::istring page;  // the normalised URL: what the processor and the files see
    Common::istring query; // the raw query (undecoded); "" when the URL has no "?"
};

// In this order: cut at the first "#"; the query is what follows the first
// "?", and every copy of "?" + query is removed from the URL; decode; strip
// "zrmedia://" (any case); strip the word "Tidewell" (any case); strip one
// leading "/"; an empty result becomes "index.nsp". Linear in the URL's
// length.
Target normalise(const Common::istring& url);

// URL decoding, for the page name and for every query parameter: every "%"
// and the (up to) two characters behind it become one character (the pair's
// value by the unvalidated rule of Conversion::hexPairValue; a
// missing character counts as NUL), scanning on behind it so that a decoded
// "%" is not decoded again; then every "+" of the result becomes a blank (an
// escaped "%2B" too, which clients rely on never sending). Linear.
Common::string decode(const Common::string& text);

struct FilePath
{
    Common::string path;      // content folder + page
    Common::string folder;    // path up to and including its last "/" ("" without one)
    Common::string name;      // what follows the folder
    Common::string extension; // what follows the last "." of the name ("" without one)
};

// The file that a page names in the content folder. Nothing is checked: the
// page may climb out of the folder with "..", and the entry point even reads
// a page missing there from "/" + page (a URL may name any local file).
FilePath fileFor(const Common::string& contentFolder, const Common::istring& page);

// A PHP page: longer than 4 characters, and the first ".php" (any case)
// starts exactly 4 characters before the end ("a.php.php" is no PHP page).
bool isPHP(const Common::istring& page);

// Files whose "<?include" directives are expanded: the extension is "htm" or
// "html" (any case).
bool expandsIncludes(const Common::string& extension);

} // namespace Routing
