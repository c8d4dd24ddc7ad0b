#pragma once

namespace Common
{

template <class T> void swap(T& a, T& b)
{
    T kept = a;
    a = b;
    b = kept;
}

// a < b through T::operator<.
template <class T> struct LessThanPredicate
{
    bool operator()(T const& a, T const& b) const { return a < b; }
};

// Bubble sort over list iterators: values are swapped, nodes stay in place.
// A pair is exchanged whenever pred(earlier, later) is false, which includes
// equal elements, so equal elements change places on every pass (not stable).
template <class Iterator, class Predicate> void sort(Iterator first, Iterator last, Predicate pred)
{
    unsigned n = 0;
    for (Iterator it = first; it != last; ++it)
        ++n;
    while (n > 1)
    {
        Iterator a = first;
        Iterator b = first;
        ++b;
        for (unsigned step = 0; step + 1 < n; ++step, ++a, ++b)
            if (!pred(*a, *b))
                swap(*a, *b);
        --n;
    }
}

} // namespace Common
