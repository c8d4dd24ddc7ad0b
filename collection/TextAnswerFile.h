#pragma once

#include "collection/UnattendSettings.h"
#include "common/IString.h"

namespace Collection
{

// The sectioned text answer file of the older OS family; both architectures
// get the same text. Section headers stand at column 0, entries are indented
// by three blanks, every line ends with CR LF. Values are inserted as typed,
// except that a line break in a value is written as a blank.
Common::istring renderTextAnswerFile(UnattendSettings const& settings);

} // namespace Collection
