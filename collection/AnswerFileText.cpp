#include "collection/AnswerFileText.h"

namespace Collection
{

void AnswerFileText::line(unsigned indent, Common::istring const& text)
{
    lastLine(indent, text);
    m_text += "\r\n";
}

void AnswerFileText::lastLine(unsigned indent, Common::istring const& text)
{
    indentation(indent);
    m_text += text;
}

void AnswerFileText::indentation(unsigned indent)
{
    static char const blanks[] = "                                ";
    while (indent > 0)
    {
        unsigned run = indent < sizeof blanks - 1 ? indent : sizeof blanks - 1;
        m_text += Common::string(blanks, run);
        indent -= run;
    }
}

} // namespace Collection
