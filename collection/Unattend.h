#pragma once

#include "common/IString.h"
#include "common/Map.h"
#include "common/String.h"

namespace Collection
{

// The answers of one unattended installation and the answer file built from
// them: a sectioned text file for the older OS family, an XML file for the
// newer one. Built per request and thrown away after the file is written.
class Unattend
{
public:
    enum EnUnattendOS
    {
        W2K3 = 0,
        W2K3_X64 = 1,
        W2K8 = 2,
        W2K8_X64 = 3
    };

    // Looks a request parameter up by name; empty when the request lacks it.
    typedef Common::istring (*ParameterLookup)(void* request, char const* name);

    Unattend();
    ~Unattend();
    Unattend(Unattend const&) = delete;
    Unattend& operator=(Unattend const&) = delete;

    // Targets `os` and forgets every answer and the rendered document.
    void Load(EnUnattendOS const& os);
    // Stores an answer. Keys ignore letter case: setting a key again in any
    // case replaces the value and keeps the key's first spelling.
    void Set(Common::istring const& key, Common::istring const& value);
    // Renders the document for the target OS and writes it to `path`,
    // replacing the file, in one write. False, with nothing written, when the
    // file cannot be opened.
    bool writeToFile(Common::string const& path);

    // The work of the "unattended.nsp" page: targets the OS named by the
    // parameter "Platform" (exact letter case; anything else writes the older
    // family's file with its fixed lines only), stores that family's non-empty
    // parameters and writes the file named by "Filename". Returns the page's
    // ReturnCode: '0' when written, '1' when the file could not be opened.
    static char WriteFromRequest(ParameterLookup lookup, void* request);
    // The same with any request object whose call `request(name)` yields the
    // parameter's value as something convertible to Common::istring.
    template <class Request> static char WriteFromRequest(Request& request)
    {
        return WriteFromRequest([](void* source, char const* name)
                                { return Common::istring((*static_cast<Request*>(source))(name)); },
                                &request);
    }

private:
    void render();

    EnUnattendOS os;
    Common::istring content;
    Common::map<Common::istring, Common::istring> settings;
};

} // namespace Collection
