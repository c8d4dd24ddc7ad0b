#pragma once

#include "common/String.h"

#include <cstring>

namespace Common
{

// Orders strings as string::operator< does (strcmp: unsigned bytes up to the
// first NUL), except that strings it cannot tell apart because they differ
// only after an embedded NUL byte are ordered by all their bytes. Two strings
// are thus equivalent exactly when they are equal (==): the order a
// sorted_map keyed by string needs when keys may hold NUL bytes, as names
// read from a file may.
//
// The strcmp part is written out inline: a sorted_map compares once per
// level of its tree, and keys mostly differ within their first bytes.
struct StringLess
{
    bool operator()(string const& a, string const& b) const
    {
        const unsigned char* x = reinterpret_cast<const unsigned char*>(a.c_str());
        const unsigned char* y = reinterpret_cast<const unsigned char*>(b.c_str());
        while (*x != 0 && *x == *y)
        {
            ++x;
            ++y;
        }
        if (*x != *y)
            return *x < *y;
        unsigned shorter = a.size() < b.size() ? a.size() : b.size();
        int order = std::memcmp(a.c_str(), b.c_str(), shorter);
        return order != 0 ? order < 0 : a.size() < b.size();
    }
};

} // namespace Common
