#include "common/filesystem/Wildcard.h"

namespace Common
{
namespace Filesystem
{

bool _isWild(string pattern, _MATCH& match)
{
    unsigned slash = pattern.rfind('/');
    unsigned star = pattern.rfind('*');
    if (slash == string::npos || star == string::npos || star < slash)
        return false;

    // The last name holds a "*", so the split gives at least two pieces: the
    // first is the prefix, the last the suffix, any others the middle.
    list<string> pieces = pattern.substr(slash + 1).split("*");
    unsigned count = pieces.size();
    match.middle.clear();
    unsigned index = 0;
    for (list<string>::iterator piece = pieces.begin(); piece != pieces.end(); ++piece, ++index)
    {
        if (index == 0)
            match.prefix = *piece;
        else if (index + 1 == count)
            match.suffix = *piece;
        else
            match.middle.push_back(*piece);
    }
    return true;
}

bool _isMatch(string const& name, _MATCH const& match)
{
    if (!match.prefix.empty() && name.find(match.prefix) != 0)
        return false;
    if (!match.suffix.empty())
    {
        // A suffix longer than the name has no occurrence at all; testing that
        // first keeps the unsigned subtraction below from wrapping.
        unsigned at = name.find(match.suffix);
        if (at == string::npos || at != name.size() - match.suffix.size())
            return false;
    }
    unsigned position = match.prefix.size();
    for (list<string>::const_iterator text = match.middle.begin(); text != match.middle.end();
         ++text)
    {
        if (name.find(*text, position) == string::npos)
            return false;
        position += text->size();
    }
    return true;
}

} // namespace Filesystem
} // namespace Common
