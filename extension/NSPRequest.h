#pragma once

#include "common/IString.h"
#include "common/List.h"

// The parameters of one page request, parsed from the URL query.
// Names and values are case-insensitive strings, so every lookup and every
// comparison of a value with a literal ignores letter case.
class NSPRequest
{
public:
    // One parameter: the decoded name and value (empty when the item had no
    // "=").
    struct _NAME_VALUE
    {
        Common::istring name;
        Common::istring value;
    };

    // A "POST" request (any case) carries no parameters and an empty query
    // string. Otherwise the query string is "&" + `query`, and `query` is
    // split at every "&" (empty pieces kept, an empty query gives one empty
    // piece); each piece becomes a parameter: the text before its first "="
    // is the name, the text behind it the value (further "=" belong to the
    // value), both through NSP::decode.
    NSPRequest(const Common::istring& method, const Common::istring& query);
    NSPRequest(const NSPRequest& other);
    ~NSPRequest();
    NSPRequest& operator=(const NSPRequest& other);

    // The value of the first parameter whose name equals `name`; "" when there
    // is none or `name` is empty.
    Common::istring operator()(const Common::istring& name) const;
    // The values of every parameter named `name`, in query order; empty when
    // `name` is empty or nothing matches.
    Common::list<Common::istring> list(const Common::istring& name) const;
    // "&" followed by the raw, undecoded query; "" for a POST request.
    Common::istring& queryString() { return m_queryString; }
    const Common::istring& method() const { return m_method; }
    const Common::list<_NAME_VALUE>& parameters() const { return m_parameters; }

private:
    Common::list<_NAME_VALUE> m_parameters;
    Common::istring m_method;
    Common::istring m_queryString;
};
