#include "extension/Routing.h"

#include "extension/NSP.h"

namespace
{
// The text from `pos` to the end, embedded NULs included.
Common::istring tail(const Common::istring& text, unsigned pos)
{
    return text.substr(pos, text.size() - pos);
}

bool beginsWith(const Common::istring& text, const char* prefix, unsigned length)
{
    return text.size() >= length && text.substr(0, length) == prefix;
}
} // namespace

Routing::Target Routing::normalise(const Common::istring& source)
{
    Target target;
    Common::istring url = source;

    // 3. Fragment.
    unsigned hash = url.find('#');
    if (hash != Common::istring::npos)
        url = url.substr(0, hash);

    // 4. Query. Every copy of "?" + query is removed from the URL. The query
    // is everything behind the first "?", so "?" + query is exactly the URL's
    // tail from that "?", and no other copy can exist: a copy would have to
    // start at a later "?" and would then run past the end. Removing every
    // copy is therefore cutting the URL at its first "?" (no search needed,
    // whatever its length).
    unsigned question = url.find('?');
    if (question != Common::istring::npos)
    {
        target.query = tail(url, question + 1);
        url = url.substr(0, question);
    }

    // 5. Decode (%-escapes first, then "+" to blank).
    url = NSP::decode(Common::string(url));

    // 6. Scheme prefix (10 characters).
    if (beginsWith(url, "zrmedia://", 10))
        url = tail(url, 10);

    // 7. Product prefix: the word alone; a following "/" stays.
    if (beginsWith(url, "Tidewell", 8))
        url = tail(url, 8);

    // 8. One leading "/".
    if (url.size() > 0 && url[0] == '/')
        url = tail(url, 1);

    // 9. The start page.
    if (url.empty())
        url = "index.nsp";

    target.page = url;
    return target;
}

Routing::FilePath Routing::fileFor(const Common::string& contentFolder, const Common::istring& page)
{
    FilePath file;
    file.path = contentFolder + Common::string(page);
    unsigned slash = file.path.rfind('/');
    unsigned nameAt = slash == Common::string::npos ? 0 : slash + 1;
    file.folder = file.path.substr(0, nameAt);
    file.name = file.path.substr(nameAt, file.path.size() - nameAt);
    unsigned dot = file.name.rfind('.');
    if (dot != Common::string::npos)
        file.extension = file.name.substr(dot + 1, file.name.size() - dot - 1);
    return file;
}

bool Routing::isPHP(const Common::istring& page)
{
    return page.size() > 4 && page.find(".php") == page.size() - 4;
}

bool Routing::expandsIncludes(const Common::string& extension)
{
    const Common::istring folded(extension);
    return folded == "htm" || folded == "html";
}
