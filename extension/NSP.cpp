#include "extension/NSP.h"

#include "extension/Routing.h"
#include "extension/pages/Pages.h"

NSP::NSP(Common::string* pageBuffer)
    : m_request(Common::istring("GET"), Common::istring()), m_response(pageBuffer), m_session()
{
}

NSP::~NSP() {}

bool NSP::Execute(const Common::istring& method, const Common::istring& page,
                  const Common::istring& query)
{
    m_request = NSPRequest(method, query);
    const Pages::Page run = Pages::find(page);
    if (!run)
        return false;
    try
    {
        run(*this);
    }
    catch (...)
    {
        // A page that failed half-way leaves nothing behind for the next
        // request; the entry point answers the failure.
        m_response.Clear();
        throw;
    }
    m_response.Flush();
    return true;
}

void NSP::HTMLHeader(const Common::string& title)
{
    m_response.Write("<html><head><title>" + title +
                     "</title><style>A:link        {color: #0000FF} A:visited     {color: "
                     "#0000FF} A:hover       {color: #0000FF} A:active      {color: #0000FF} "
                     "</style></head><body><table width=100% height=100% cellspacing=0 "
                     "cellpadding=0><tr><td align=left valign=top height=100%>");
}

void NSP::HTMLFooter()
{
    m_response.Write("</td></tr></table></body></html>");
}

Common::string NSP::decode(const Common::string& text)
{
    return Routing::decode(text);
}
