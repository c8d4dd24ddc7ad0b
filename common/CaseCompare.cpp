#include "common/CaseCompare.h"

int memicmp(char const* a, char const* b, int n)
{
    for (int i = 0; i < n; ++i)
        if (Common::foldCase(a[i]) != Common::foldCase(b[i]))
            return 1;
    return 0;
}

int stricmp(char const* a, char const* b)
{
    for (; *a != '\0' && *b != '\0'; ++a, ++b)
        if (Common::foldCase(*a) != Common::foldCase(*b))
            return 1;
    return 0;
}
