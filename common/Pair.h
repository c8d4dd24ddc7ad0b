#pragma once

namespace Common
{

template <class A, class B> struct pair
{
    pair() : first(), second() {}
    pair(A const& a, B const& b) : first(a), second(b) {}

    A first;
    B second;
};

} // namespace Common
