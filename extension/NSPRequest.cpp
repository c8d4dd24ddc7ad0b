#include "extension/NSPRequest.h"

#include "extension/NSP.h"

NSPRequest::NSPRequest(const Common::istring& method, const Common::istring& query)
    : m_method(method)
{
    if (method == "POST")
        return;
    m_queryString = "&" + query;

    Common::list<Common::istring> pieces = query.split(Common::istring("&"));
    for (Common::list<Common::istring>::const_iterator it = pieces.begin(); it != pieces.end();
         ++it)
    {
        const Common::string piece(*it);
        _NAME_VALUE item;
        unsigned equals = piece.find('=');
        if (equals == Common::string::npos)
        {
            item.name = NSP::decode(piece);
        }
        else
        {
            item.name = NSP::decode(piece.substr(0, equals));
            item.value = NSP::decode(piece.substr(equals + 1, piece.size() - equals - 1));
        }
        m_parameters.push_back(item);
    }
}

NSPRequest::NSPRequest(const NSPRequest& other)
    : m_parameters(other.m_parameters), m_method(other.m_method), m_queryString(other.m_queryString)
{
}

NSPRequest::~NSPRequest()
{
    m_parameters.clear();
}

NSPRequest& NSPRequest::operator=(const NSPRequest& other)
{
    if (this == &other)
        return *this;
    // Built first, so a failure leaves this request as it was.
    Common::list<_NAME_VALUE> parameters(other.m_parameters);
    Common::istring method(other.m_method);
    Common::istring queryString(other.m_queryString);
    m_parameters.clear();
    for (Common::list<_NAME_VALUE>::const_iterator it = parameters.begin(); it != parameters.end();
         ++it)
        m_parameters.push_back(*it);
    m_method = method;
    m_queryString = queryString;
    return *this;
}

Common::istring NSPRequest::operator()(const Common::istring& name) const
{
    if (name.empty())
        return Common::istring();
    for (Common::list<_NAME_VALUE>::const_iterator it = m_parameters.begin();
         it != m_parameters.end(); ++it)
        if (it->name == name)
            return it->value;
    return Common::istring();
}

Common::list<Common::istring> NSPRequest::list(const Common::istring& name) const
{
    Common::list<Common::istring> values;
    if (name.empty())
        return values;
    for (Common::list<_NAME_VALUE>::const_iterator it = m_parameters.begin();
         it != m_parameters.end(); ++it)
        if (it->name == name)
            values.push_back(it->value);
    return values;
}
