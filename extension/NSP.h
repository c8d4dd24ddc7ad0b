#pragma once

#include "common/IString.h"
#include "common/String.h"
#include "extension/NSPRequest.h"
#include "extension/NSPResponse.h"
#include "extension/NSPSession.h"

// The server-page processor. It owns the current request, a
// response over the entry point's page buffer and an (empty) session. For
// each request it decides whether the page is one of its eleven fixed pages;
// if so it runs the page, flushes the answer into the page buffer and returns
// true. Takes no lock: one request at a time.
class NSP
{
public:
    // The request starts as that of an empty "GET" query; the response
    // flushes into `pageBuffer` (not owned).
    explicit NSP(Common::string* pageBuffer);
    ~NSP();
    NSP(const NSP&) = delete;
    NSP& operator=(const NSP&) = delete;

    // True if `page` (the whole normalised URL, compared ignoring case) is
    // one of the pages: it has been run and its answer flushed into the page
    // buffer. False otherwise: nothing was written. The request is rebuilt
    // from `method` and `query` first, in either case.
    bool Execute(const Common::istring& method, const Common::istring& page,
                 const Common::istring& query);

    // The HTML frame of the few pages that answer in HTML, written into the
    // response. The title is not escaped.
    void HTMLHeader(const Common::string& title);
    void HTMLFooter();

    // URL decoding, the same as the entry point uses for the page name
    // (Routing::decode, where its rule is described).
    static Common::string decode(const Common::string& text);

    // What the pages work with.
    NSPRequest& request() { return m_request; }
    NSPResponse& response() { return m_response; }
    NSPSession& session() { return m_session; }

private:
    NSPRequest m_request;
    NSPResponse m_response;
    NSPSession m_session;
};
