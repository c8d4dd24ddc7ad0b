#include "extension/NSP.h"

#include "extension/pages/Pages.h"

namespace
{
struct Page
{
    const char* name;
    void (*run)(NSP& nsp);
};

// Compared in this order; the first equal name selects the page.
const Page kPages[] = {
    {"index.nsp", &Pages::Index},
    {"allstorage.nsp", &Pages::AllStorage},
    {"debug.nsp", &Pages::Debug},
    {"hardware.nsp", &Pages::Hardware},
    {"wd100.nsp", &Pages::Wd100},
    {"ostree.nsp", &Pages::OSTree},
    {"fsetreset.nsp", &Pages::FSETReset},
    {"reboot.nsp", &Pages::Reboot},
    {"setbootorder.nsp", &Pages::SetBootOrder},
    {"system.nsp", &Pages::System},
    {"unattended.nsp", &Pages::Unattended},
};
const unsigned kPageCount = sizeof kPages / sizeof kPages[0];

const char* const kPageNames[] = {
    kPages[0].name, kPages[1].name, kPages[2].name, kPages[3].name, kPages[4].name,  kPages[5].name,
    kPages[6].name, kPages[7].name, kPages[8].name, kPages[9].name, kPages[10].name,
};
static_assert(sizeof kPageNames / sizeof kPageNames[0] == kPageCount, "one name per page");

// The value of one character of a hexadecimal pair, by the rule of
// Conversion::hexStringToInt: an ASCII letter of either case counts
// its upper-case form's distance from "A" plus 10, anything else (a digit, or
// any other byte) its code minus "0". Nothing is validated.
int hexValue(unsigned char c)
{
    if (c >= 'a' && c <= 'z')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'Z')
        return c - 'A' + 10;
    return static_cast<int>(c) - '0';
}
} // namespace

NSP::NSP(Common::string* pageBuffer)
    : m_request(Common::istring("GET"), Common::istring()), m_response(pageBuffer), m_session()
{
}

NSP::~NSP() {}

const char* const* NSP::pageNames(unsigned& count)
{
    count = kPageCount;
    return kPageNames;
}

bool NSP::Execute(const Common::istring& method, const Common::istring& page,
                  const Common::istring& query)
{
    m_request = NSPRequest(method, query);
    for (unsigned i = 0; i < kPageCount; ++i)
    {
        if (page == kPages[i].name)
        {
            try
            {
                kPages[i].run(*this);
            }
            catch (...)
            {
                // A page that failed half-way leaves nothing behind for the
                // next request; the entry point answers the failure.
                m_response.Clear();
                throw;
            }
            m_response.Flush();
            return true;
        }
    }
    return false;
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

// Equivalent to the reference loop (find the next "%", replace it and the up
// to two characters behind it by one character, search on one position behind
// that character; then replace every "+"), in one pass: the decoded character
// is never looked at again by the "%" search, and the "+" rule applies to
// every character of the result, decoded or not.
Common::string NSP::decode(const Common::string& text)
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
            unsigned char first = i + 1 < size ? static_cast<unsigned char>(in[i + 1]) : 0;
            unsigned char second = i + 2 < size ? static_cast<unsigned char>(in[i + 2]) : 0;
            unsigned value = static_cast<unsigned>(hexValue(first) * 16 + hexValue(second));
            c = static_cast<char>(value & 0xFFu);
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
