#pragma once

#include "common/IString.h"

namespace Collection
{

// An answer file under construction, built line by line. Both answer-file
// formats end their lines with CR LF; only the XML file's final line has no
// line end, which `lastLine` writes.
class AnswerFileText
{
public:
    // `indent` blanks, the text, CR LF.
    void line(unsigned indent, Common::istring const& text);
    // `indent` blanks and the text, with no line end: nothing may follow.
    void lastLine(unsigned indent, Common::istring const& text);

    Common::istring const& text() const { return m_text; }

private:
    void indentation(unsigned indent);

    Common::istring m_text;
};

} // namespace Collection
