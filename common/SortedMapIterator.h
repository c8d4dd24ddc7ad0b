#pragma once

#include "common/SortedMapNode.h"

namespace Common
{

// Position in a Common::sorted_map, walking the entries in ascending key
// order through the parent links (no stack). Only ++ is offered, as callers
// only walk forwards; end() is the null position. An iterator stays valid
// until its own entry is erased or the map is cleared, assigned or destroyed.
template <class T, class Ref, class Ptr> class SortedMapIterator
{
public:
    typedef SortedMapNode<T> Node;

    SortedMapIterator() : m_node(nullptr) {}
    explicit SortedMapIterator(Node* node) : m_node(node) {}
    // The const iterator is built from the mutable one.
    template <class R, class P>
    SortedMapIterator(SortedMapIterator<T, R, P> const& other) : m_node(other.node())
    {
    }

    Ref operator*() const { return m_node->value; }
    Ptr operator->() const { return &m_node->value; }

    // The next key: the leftmost node of the right subtree, or else the first
    // ancestor reached from its left side. Past the greatest key, end().
    SortedMapIterator& operator++()
    {
        if (m_node->right != nullptr)
        {
            m_node = m_node->right;
            while (m_node->left != nullptr)
                m_node = m_node->left;
            return *this;
        }
        Node* from = m_node;
        m_node = m_node->parent;
        while (m_node != nullptr && m_node->right == from)
        {
            from = m_node;
            m_node = m_node->parent;
        }
        return *this;
    }

    bool operator==(SortedMapIterator const& other) const { return m_node == other.m_node; }
    bool operator!=(SortedMapIterator const& other) const { return m_node != other.m_node; }

    Node* node() const { return m_node; }

private:
    Node* m_node;
};

} // namespace Common
