#pragma once

#include "common/ListNode.h"

namespace Common
{

// Bidirectional position in a Common::list. Only ++ is offered, as callers
// only walk forwards. An iterator stays valid until its own element is erased.
template <class T, class Ref, class Ptr> class ListIterator
{
public:
    typedef ListNode<T> Node;

    ListIterator() : m_node(nullptr) {}
    explicit ListIterator(Node* node) : m_node(node) {}
    // The const iterator is built from the mutable one.
    template <class R, class P>
    ListIterator(ListIterator<T, R, P> const& other) : m_node(other.node())
    {
    }

    Ref operator*() const { return m_node->value; }
    Ptr operator->() const { return &m_node->value; }

    ListIterator& operator++()
    {
        m_node = m_node->next;
        return *this;
    }
    ListIterator operator++(int)
    {
        ListIterator before = *this;
        m_node = m_node->next;
        return before;
    }

    bool operator==(ListIterator const& other) const { return m_node == other.m_node; }
    bool operator!=(ListIterator const& other) const { return m_node != other.m_node; }

    Node* node() const { return m_node; }

private:
    Node* m_node;
};

} // namespace Common
