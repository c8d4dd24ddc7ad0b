#pragma once

// The search loops shared by string and istring. Both take the haystack as
// (text, size) and never read outside it; npos (all bits set) means "none".
namespace Common
{
namespace TextSearch
{

// First position >= pos where the n-byte needle matches; npos when none or
// when the needle is longer than the text. An empty needle matches at pos
// whenever pos <= size.
unsigned forward(char const* text, unsigned size, char const* needle, unsigned pos, unsigned n,
                 bool ignoreCase);

// Last position <= pos (npos or past the end: the last character) where the
// needle fits and matches, trying down to `lowest` inclusive; npos when none.
unsigned backward(char const* text, unsigned size, char const* needle, unsigned pos, unsigned n,
                  bool ignoreCase, unsigned lowest);

} // namespace TextSearch
} // namespace Common
