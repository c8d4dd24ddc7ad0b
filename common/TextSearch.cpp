#include "common/TextSearch.h"

#include "common/CaseCompare.h"

#include <cstring>

namespace Common
{
namespace TextSearch
{
namespace
{
const unsigned kNone = 0xFFFFFFFFu;

bool matchesAt(char const* text, char const* needle, unsigned n, bool ignoreCase)
{
    if (ignoreCase)
        return memicmp(text, needle, static_cast<int>(n)) == 0;
    return std::memcmp(text, needle, n) == 0;
}
} // namespace

unsigned forward(char const* text, unsigned size, char const* needle, unsigned pos, unsigned n,
                 bool ignoreCase)
{
    if (n > size || pos > size - n)
        return kNone;
    for (unsigned at = pos; at <= size - n; ++at)
        if (matchesAt(text + at, needle, n, ignoreCase))
            return at;
    return kNone;
}

unsigned backward(char const* text, unsigned size, char const* needle, unsigned pos, unsigned n,
                  bool ignoreCase, unsigned lowest)
{
    if (n > size)
        return kNone;
    unsigned start = pos;
    if (size == 0)
        start = 0;
    else if (pos == kNone || pos > size - 1)
        start = size - 1;
    if (start + n > size)
        start -= start + n - size;
    for (unsigned at = start + 1; at-- > lowest;)
        if (matchesAt(text + at, needle, n, ignoreCase))
            return at;
    return kNone;
}

} // namespace TextSearch
} // namespace Common
