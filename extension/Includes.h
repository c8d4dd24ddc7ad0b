#pragma once

#include "common/String.h"

// Expansion of "<?include NAME?>" directives in ".htm"/".html" pages.
namespace Includes
{

// Reads a whole file; false when it cannot be opened.
class Reader
{
public:
    virtual ~Reader() {}
    virtual bool read(const Common::string& path, Common::string& text) = 0;
};

// Our limits, so that no page can loop for ever: at most this many
// directives are replaced by the content of a file that opened (a page that
// includes itself stops here), and no replacement is made that would make
// the page longer than kMaxPageBytes. When either limit is reached,
// expansion stops and the page is served as it stands, its remaining
// directives unexpanded. Directives that are only removed (empty name, a
// file that does not open) do not count: they shorten the page.
const unsigned kMaxExpansions = 1000;
const unsigned kMaxPageBytes = 64u << 20;

struct Result
{
    Common::string text;
    unsigned expansions; // directives replaced by a file's content
    bool limited;        // stopped by one of the limits
};

// The reference loop: find the first "<?include " (with its blank,
// case-sensitive) and the first "?>" at or after it; while both exist,
// replace the span from the directive up to and including "?>" by the
// content of the named file (the name is exactly the text between them,
// blanks included; a name beginning with "/" is read from
// `contentFolder` + name, any other from `pageFolder` + name; an empty name
// or a file that does not open gives ""), then search again from the
// beginning, so included directives are expanded too.
//
// Done without re-searching from the beginning and without rebuilding the
// whole page at every replacement, with identical results: the text before
// a replaced directive never changes again, and no directive can start
// earlier than 9 characters before it (an earlier one would have been
// found first, or lies wholly in unchanged text). So the search resumes 9
// characters before the last replacement, the text before that point is
// final, and the unsearched rest is kept in a buffer that grows at its
// front. Time is linear in the page's size plus the included text.
Result expand(const Common::string& page, const Common::string& pageFolder,
              const Common::string& contentFolder, Reader& reader);

} // namespace Includes
