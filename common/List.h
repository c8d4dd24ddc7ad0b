#pragma once

#include "common/DefaultAllocator.h"
#include "common/ListIterator.h"

#include <new>

namespace Common
{

// A circular doubly-linked list with a sentinel node.
//
// The sentinel is allocated lazily: a list that is never touched allocates
// nothing. size() walks the list (linear time). Elements are owned by value.
template <class T, class Alloc = DefaultAllocator> class list
{
public:
    typedef ListNode<T> Node;
    typedef ListIterator<T, T&, T*> iterator;
    typedef ListIterator<T, T const&, T const*> const_iterator;

    list() : m_sentinel(nullptr), m_initialized(0) {}
    list(list const& other) : m_sentinel(nullptr), m_initialized(0)
    {
        for (const_iterator it = other.begin(); it != other.end(); ++it)
            push_back(*it);
    }
    ~list()
    {
        if (m_initialized != 1)
            return;
        clear();
        putNode(m_sentinel);
    }

    list& operator=(list const& other)
    {
        if (this == &other)
            return *this;
        clear();
        for (const_iterator it = other.begin(); it != other.end(); ++it)
            push_back(*it);
        return *this;
    }

    iterator begin()
    {
        initialize();
        return iterator(m_sentinel->next);
    }
    iterator end()
    {
        initialize();
        return iterator(m_sentinel);
    }
    const_iterator begin() const
    {
        const_cast<list*>(this)->initialize();
        return const_iterator(m_sentinel->next);
    }
    const_iterator end() const
    {
        const_cast<list*>(this)->initialize();
        return const_iterator(m_sentinel);
    }

    unsigned size() const
    {
        unsigned n = 0;
        for (const_iterator it = begin(); it != end(); ++it)
            ++n;
        return n;
    }
    bool empty() const { return begin() == end(); }

    iterator insert(iterator pos, T const& value)
    {
        initialize();
        Node* node = createNode(value);
        Node* after = pos.node();
        node->next = after;
        node->prev = after->prev;
        after->prev->next = node;
        after->prev = node;
        return iterator(node);
    }

    template <class InputIterator>
    void insert(iterator pos, InputIterator first, InputIterator last)
    {
        for (; first != last; ++first)
            insert(pos, *first);
    }

    void push_back(T const& value) { insert(end(), value); }

    // Erasing end() is a no-op that returns end().
    iterator erase(iterator pos)
    {
        initialize();
        Node* node = pos.node();
        if (node == m_sentinel)
            return pos;
        Node* next = node->next;
        node->prev->next = next;
        next->prev = node->prev;
        destroy(&node->value);
        putNode(node);
        return iterator(next);
    }

    void clear()
    {
        if (m_initialized != 1)
            return;
        Node* node = m_sentinel->next;
        while (node != m_sentinel)
        {
            Node* next = node->next;
            destroy(&node->value);
            putNode(node);
            node = next;
        }
        m_sentinel->next = m_sentinel;
        m_sentinel->prev = m_sentinel;
    }

private:
    void initialize()
    {
        if (m_initialized == 1)
            return;
        m_sentinel = getNode();
        m_sentinel->next = m_sentinel;
        m_sentinel->prev = m_sentinel;
        m_initialized = 1;
    }

    Node* allocateNode() { return static_cast<Node*>(m_allocator.allocate(sizeof(Node))); }

    Node* getNode()
    {
        Node* node = allocateNode();
        try
        {
            new (&node->value) T();
        }
        catch (...)
        {
            m_allocator.deallocate(node);
            throw;
        }
        return node;
    }

    Node* createNode(T const& value)
    {
        Node* node = allocateNode();
        try
        {
            new (&node->value) T(value);
        }
        catch (...)
        {
            m_allocator.deallocate(node);
            throw;
        }
        return node;
    }

    // Frees a node whose value is still alive (the sentinel) or destroyed.
    void putNode(Node* node)
    {
        if (node == m_sentinel)
            destroy(&node->value);
        m_allocator.deallocate(node);
    }

    static void destroy(T* value) { value->~T(); }

    Node* m_sentinel;
    unsigned char m_initialized;
    Alloc m_allocator;
};

} // namespace Common
