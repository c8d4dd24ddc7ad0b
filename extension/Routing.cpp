#include "extension/Routing.h"

#include "common/Conversion.h"

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

    // The fragment goes.
    unsigned hash = url.find('#');
    if (hash != Common::istring::npos)
        url = url.substr(0, hash);

    // The query. Every copy of "?" + query is removed from the URL. The
    // query is everything behind the first "?", so "?" + query is exactly the
    // URL's tail from that "?", and no other copy can exist: a copy would have
    // to start at a later "?" and would then run past the end. Removing every
    // copy is therefore cutting the URL at its first "?".
    unsigned question = url.find('?');
    if (question != Common::istring::npos)
    {
        target.query = tail(url, question + 1);
        url = url.substr(0, question);
    }

    // Decoded after the split, so "%3F" stays part of the page name.
    url = decode(Common::string(url));

    // The scheme.
    if (beginsWith(url, "zrmedia://", 10))
        url = tail(url, 10);

    // The product name: the word alone; a following "/" stays.
    if (beginsWith(url, "Tidewell", 8))
        url = tail(url, 8);

    // One leading "/".
    if (url.size() > 0 && url[0] == '/')
        url = tail(url, 1);

    // The start page.
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

// One pass: a decoded character is never looked at again by the "%" search,
// and the "+" rule applies to every character of the result, decoded or not.
Common::string Routing::decode(const Common::string& text)
{
    const unsigned size = text.size();
    const char* in = text.c_str();
    // The result is never longer than the text: count it first.
    unsigned length = 0;
    for (unsigned i = 0; i < size; ++length)
        i += in[i] == '%' ? (size - i >= 3 ? 3 : size - i) : 1;

    char* out = nullptr;
    Common::string result = Common::string::uninitialized(length, out);
    for (unsigned i = 0; i < size;)
    {
        char c = in[i];
        if (c == '%')
        {
            char high = i + 1 < size ? in[i + 1] : '\0';
            char low = i + 2 < size ? in[i + 2] : '\0';
            c = static_cast<char>(Conversion::hexPairValue(high, low));
            i += size - i >= 3 ? 3 : size - i;
        }
        else
        {
            ++i;
        }
        *out++ = c == '+' ? ' ' : c;
    }
    return result;
}
