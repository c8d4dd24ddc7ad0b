#pragma once

// Case-insensitive comparisons of the foundation. Letters fold as in the C
// locale (the process never sets another). Both return 0 for "equal" and 1
// for "different", never a negative value, so neither can order texts.

// 0 when the first n characters agree ignoring case, else 1.
int memicmp(char const* a, char const* b, int n);

// Walks both texts while both have characters left: 1 at the first pair that
// differs ignoring case, else 0. A text therefore compares equal to every
// extension of it ("ab" against "abc" is 0).
int stricmp(char const* a, char const* b);

namespace Common
{
inline char foldCase(char c)
{
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}
} // namespace Common
