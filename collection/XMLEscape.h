#pragma once

#include "common/String.h"

namespace Collection
{

// A value as the person typed it, made fit to stand in an XML 1.0 document
// declared as UTF-8, so that a parser reads back the same text.
//
// Both forms escape "&", "<" and ">", and write a carriage return as "&#13;"
// (a parser would turn a literal one into a line feed). A control character
// XML cannot hold (below 0x20, other than tab, line feed and carriage return)
// and the non-characters U+FFFE and U+FFFF become a blank. Bytes that are not
// UTF-8 are dropped, and so are sequences that only look like it: 5- and
// 6-byte forms, overlong forms, surrogates and code points past U+10FFFF.
// Text without any of these comes back unchanged.
//
// Escape each value exactly once, where it is placed: escaped text escaped
// again shows its entities ("&amp;amp;") to the reader.

// For the text between a start tag and its end tag.
Common::string xmlText(Common::string const& value);

// For the inside of an attribute value in double or single quotes: also
// escapes '"' and "'", and writes tab and line feed as "&#9;" and "&#10;",
// which a parser would otherwise turn into blanks.
Common::string xmlAttribute(Common::string const& value);

} // namespace Collection
