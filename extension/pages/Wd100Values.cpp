#include "extension/pages/Wd100Values.h"

namespace Wd100Values
{

namespace
{
const unsigned int kMaximumNameLength = 16;
const unsigned int kMaximumDigits = 9;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}
} // namespace

bool dottedQuad(const Common::string& text, unsigned char address[4])
{
    unsigned int at = 0;
    for (unsigned int field = 0; field < 4; ++field)
    {
        if (field > 0 && text[at++] != '.')
            return false;
        unsigned int value = 0;
        unsigned int digits = 0;
        // operator[] at the end yields the NUL, which stops the loop.
        for (; isDigit(text[at]) && digits < 4; ++at, ++digits)
            value = value * 10 + static_cast<unsigned int>(text[at] - '0');
        if (digits == 0 || digits > 3 || value > 255)
            return false;
        address[field] = static_cast<unsigned char>(value);
    }
    return at == text.size();
}

bool contiguousMask(const unsigned char mask[4])
{
    unsigned int bits =
        static_cast<unsigned int>(mask[0]) << 24 | mask[1] << 16 | mask[2] << 8 | mask[3];
    unsigned int zeros = ~bits;
    // The zeros form one run at the bottom exactly when zeros + 1 is a power
    // of two (or zero, for no zero bit at all).
    return (zeros & (zeros + 1)) == 0;
}

bool userName(const Common::string& text)
{
    if (text.empty() || text.size() > kMaximumNameLength)
        return false;
    for (unsigned int i = 0; i < text.size(); ++i)
        if (text[i] < 0x20 || text[i] > 0x7E)
            return false;
    return true;
}

bool decimal(const Common::string& text, unsigned int maximum, unsigned int& value)
{
    if (text.empty() || text.size() > kMaximumDigits)
        return false;
    value = 0;
    for (unsigned int i = 0; i < text.size(); ++i)
    {
        if (!isDigit(text[i]))
            return false;
        value = value * 10 + static_cast<unsigned int>(text[i] - '0');
    }
    return value <= maximum;
}

bool yesNo(const Common::istring& text, bool& value)
{
    value = text == "Yes";
    return value || text == "No";
}

} // namespace Wd100Values
