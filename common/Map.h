#pragma once

#include "common/List.h"
#include "common/Pair.h"

namespace Common
{

// A list of key/value pairs kept in the order K::operator< gives; no tree, no
// hashing (maps here hold tens of entries).
//
// Keys are looked up with K::operator== and placed with K::operator<. For
// istring keys, whose < is never true, every new key goes to the front: such
// a map iterates in reverse order of first insertion, and re-inserting a key
// in another letter case only replaces the value (the first spelling stays).
template <class K, class V, class Alloc = DefaultAllocator> class map
{
public:
    typedef pair<K, V> value_type;
    typedef list<value_type, Alloc> storage;
    typedef typename storage::iterator iterator;
    typedef typename storage::const_iterator const_iterator;

    iterator begin() { return m_items.begin(); }
    iterator end() { return m_items.end(); }
    const_iterator begin() const { return m_items.begin(); }
    const_iterator end() const { return m_items.end(); }
    unsigned size() const { return m_items.size(); }
    bool empty() const { return m_items.empty(); }

    iterator find(K const& key)
    {
        iterator it = begin();
        for (; it != end(); ++it)
            if (it->first == key)
                break;
        return it;
    }
    const_iterator find(K const& key) const
    {
        const_iterator it = begin();
        for (; it != end(); ++it)
            if (it->first == key)
                break;
        return it;
    }

    // Overwrites the value of an existing key: (its position, false).
    pair<iterator, bool> insert(value_type const& item)
    {
        iterator found = find(item.first);
        if (found != end())
        {
            found->second = item.second;
            return pair<iterator, bool>(found, false);
        }
        iterator at = begin();
        while (at != end() && at->first < item.first)
            ++at;
        m_items.insert(at, item);
        return pair<iterator, bool>(find(item.first), true);
    }

    V& operator[](K const& key)
    {
        iterator found = find(key);
        if (found == end())
            found = insert(value_type(key, V())).first;
        return found->second;
    }

    unsigned erase(K const& key)
    {
        iterator found = find(key);
        if (found == end())
            return 0;
        m_items.erase(found);
        return 1;
    }

    void clear() { m_items.clear(); }

private:
    storage m_items;
};

} // namespace Common
