#include "common/JSONText.h"

#include "common/Format.h"

namespace Conversion
{

Common::string toJSONText(const Common::string& text)
{
    Common::string escaped;
    unsigned int plainFrom = 0;
    for (unsigned int i = 0; i < text.size(); ++i)
    {
        unsigned char byte = static_cast<unsigned char>(text[i]);
        bool plain = byte >= 0x20 && byte < 0x7F && byte != '"' && byte != '\\';
        if (plain)
            continue;
        escaped += text.substr(plainFrom, i - plainFrom);
        if (byte == '"' || byte == '\\')
        {
            const char pair[] = {'\\', static_cast<char>(byte), '\0'};
            escaped += pair;
        }
        else
            escaped += Common::formatShort("\\u%04X", byte);
        plainFrom = i + 1;
    }
    if (plainFrom == 0)
        return text;
    return escaped + text.substr(plainFrom);
}

} // namespace Conversion
