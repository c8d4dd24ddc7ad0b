#pragma once

#include "common/IString.h"
#include "common/String.h"

// Checks and conversions of the values "wd100.nsp" accepts. Each answers
// false for a value it refuses; its outputs are then not to be used.
namespace Wd100Values
{
// Exactly four decimal fields of 1 to 3 digits, each up to 255, separated by
// "." and nothing else.
bool dottedQuad(const Common::string& text, unsigned char address[4]);
// Ones from the top, then zeros only.
bool contiguousMask(const unsigned char mask[4]);
// 1 to 16 printable ASCII characters.
bool userName(const Common::string& text);
// 1 to 9 decimal digits, nothing else, at most `maximum`.
bool decimal(const Common::string& text, unsigned int maximum, unsigned int& value);
// "Yes" or "No", any case.
bool yesNo(const Common::istring& text, bool& value);
} // namespace Wd100Values
