#pragma once

#include "common/String.h"

namespace Conversion
{

// `text` as the inside of a JSON string (the quotes are not added): '"' and
// '\' are escaped, and every byte below 0x20, 0x7F and every byte from 0x80
// up is written as "\u00XX" (bytes are taken as Latin-1), so the result is
// plain ASCII and valid JSON whatever the bytes were, e.g. a name read from
// a management controller. Escape a text once, where it is written.
Common::string toJSONText(const Common::string& text);

} // namespace Conversion
