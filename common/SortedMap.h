#pragma once

#include "common/DefaultAllocator.h"
#include "common/Pair.h"
#include "common/Sort.h"
#include "common/SortedMapIterator.h"

#include <new>

namespace Common
{

// Key/value pairs with unique keys, iterated in ascending key order, held in
// an AVL tree: the two subtrees of every node differ in height by at most
// one, so find, insert and erase take time logarithmic in size() in the
// worst case, whatever the order in which keys arrive. size() is constant
// time. For maps that may grow large; Common::map stays the sorted list it is.
//
// Keys are compared with Less alone (by default K::operator<): two keys are
// the same key when neither is less than the other. Less must therefore be a
// strict weak order whose equivalence is the keys' equality (==). A relation
// that is never true, like istring's operator<, makes every key the same one;
// Common::string's operator< stops at the first NUL byte and so cannot tell
// apart names that differ after one (use StringLess). A Less that breaks
// these rules does not crash, but entries then go missing or cannot be found.
//
// insert() of an existing key assigns the new value and keeps the stored key.
// Keys cannot be changed in place (value_type's first is const).
//
// Iterators: insert and erase leave the iterators to other entries valid
// (nodes are relinked, never moved); erase invalidates those to the erased
// entry; clear(), assignment and destruction invalidate all.
//
// Nothing recurses: lookups descend in a loop, and iteration, copying and
// teardown climb back through the parent links, so the stack in use is fixed
// whatever the size. Nodes come one at a time from Alloc, as Common::list's
// do. Not thread-safe.
template <class K, class V, class Less = LessThanPredicate<K>, class Alloc = DefaultAllocator>
class sorted_map
{
public:
    typedef pair<K const, V> value_type;
    typedef SortedMapNode<value_type> Node;
    typedef SortedMapIterator<value_type, value_type&, value_type*> iterator;
    typedef SortedMapIterator<value_type, value_type const&, value_type const*> const_iterator;

    sorted_map() : m_root(nullptr), m_size(0) {}
    sorted_map(sorted_map const& other) : m_root(nullptr), m_size(0) { copy(other); }
    ~sorted_map() { clear(); }

    // Should a copy fail (out of memory, a throwing copy of K or V), this map
    // is left empty and the exception goes on.
    sorted_map& operator=(sorted_map const& other)
    {
        if (this == &other)
            return *this;
        clear();
        copy(other);
        return *this;
    }

    // Exchanges the contents in constant time; iterators follow their
    // entries into the other map. Both maps' Alloc must be able to free each
    // other's nodes (as stateless allocators such as DefaultAllocator can).
    void swap(sorted_map& other)
    {
        Node* root = m_root;
        m_root = other.m_root;
        other.m_root = root;
        unsigned size = m_size;
        m_size = other.m_size;
        other.m_size = size;
    }

    iterator begin() { return iterator(leftmost(m_root)); }
    iterator end() { return iterator(); }
    const_iterator begin() const { return const_iterator(leftmost(m_root)); }
    const_iterator end() const { return const_iterator(); }
    unsigned size() const { return m_size; }
    bool empty() const { return m_size == 0; }

    iterator find(K const& key) { return iterator(lookup(key)); }
    const_iterator find(K const& key) const { return const_iterator(lookup(key)); }

    // Adds a copy of `item`: (its position, true). When the key is there
    // already, assigns item.second to that entry instead: (its position,
    // false).
    pair<iterator, bool> insert(value_type const& item)
    {
        // One comparison a level: down to a leaf, remembering the last node
        // not greater than the key; that one holds the key if any does.
        Node* parent = nullptr;
        Node* notGreater = nullptr;
        Node** link = &m_root;
        while (*link != nullptr)
        {
            parent = *link;
            if (m_less(item.first, parent->value.first))
                link = &parent->left;
            else
            {
                notGreater = parent;
                link = &parent->right;
            }
        }
        if (notGreater != nullptr && !m_less(notGreater->value.first, item.first))
        {
            notGreater->value.second = item.second;
            return pair<iterator, bool>(iterator(notGreater), false);
        }
        Node* node = createNode(item, parent);
        *link = node;
        ++m_size;
        rebalance(parent);
        return pair<iterator, bool>(iterator(node), true);
    }

    // Removes the entry with that key: 1, or 0 when there is none.
    unsigned erase(K const& key)
    {
        Node* node = lookup(key);
        if (node == nullptr)
            return 0;
        unlink(node);
        destroyNode(node);
        --m_size;
        return 1;
    }

    // Frees every node, leaves first: a node is freed once both its subtrees
    // are gone, then the walk climbs to its parent.
    void clear()
    {
        Node* node = m_root;
        while (node != nullptr)
        {
            if (node->left != nullptr)
                node = node->left;
            else if (node->right != nullptr)
                node = node->right;
            else
            {
                Node* parent = node->parent;
                if (parent != nullptr)
                    (parent->left == node ? parent->left : parent->right) = nullptr;
                destroyNode(node);
                node = parent;
            }
        }
        m_root = nullptr;
        m_size = 0;
    }

private:
    static Node* leftmost(Node* node)
    {
        if (node != nullptr)
            while (node->left != nullptr)
                node = node->left;
        return node;
    }

    static unsigned heightOf(Node const* node) { return node != nullptr ? node->height : 0; }

    static void updateHeight(Node* node)
    {
        unsigned left = heightOf(node->left);
        unsigned right = heightOf(node->right);
        node->height = static_cast<unsigned char>(1 + (left > right ? left : right));
    }

    // As insert's descent: one comparison a level, one more at the end.
    Node* lookup(K const& key) const
    {
        Node* notGreater = nullptr;
        Node* node = m_root;
        while (node != nullptr)
        {
            if (m_less(key, node->value.first))
                node = node->left;
            else
            {
                notGreater = node;
                node = node->right;
            }
        }
        if (notGreater != nullptr && !m_less(notGreater->value.first, key))
            return notGreater;
        return nullptr;
    }

    // Hangs `by` (which may be null) where `node` hangs: in its parent's link
    // to it, or as the root.
    void replace(Node* node, Node* by)
    {
        Node* parent = node->parent;
        if (parent == nullptr)
            m_root = by;
        else if (parent->left == node)
            parent->left = by;
        else
            parent->right = by;
        if (by != nullptr)
            by->parent = parent;
    }

    // Lifts the child node->*toward into `node`'s place and returns it;
    // `node` becomes that child's child on the other side (`away`), taking
    // over its inner subtree. rotate(n, &Node::right, &Node::left) is the
    // left rotation, rotate(n, &Node::left, &Node::right) the right one.
    Node* rotate(Node* node, Node* Node::*toward, Node* Node::*away)
    {
        Node* up = node->*toward;
        Node* inner = up->*away;
        node->*toward = inner;
        if (inner != nullptr)
            inner->parent = node;
        replace(node, up);
        up->*away = node;
        node->parent = up;
        updateHeight(node);
        updateHeight(up);
        return up;
    }

    // From `node` up: refreshes each height, and where the two subtrees
    // differ by two, rotates (twice when the taller grandchild is the inner
    // one). `node` is the lowest node whose subtree changed, its height still
    // the one from before; once a subtree's height comes out as before,
    // nothing above it changes and the walk stops.
    void rebalance(Node* node)
    {
        while (node != nullptr)
        {
            unsigned before = node->height;
            int balance =
                static_cast<int>(heightOf(node->left)) - static_cast<int>(heightOf(node->right));
            if (balance > 1)
            {
                if (heightOf(node->left->left) < heightOf(node->left->right))
                    rotate(node->left, &Node::right, &Node::left);
                node = rotate(node, &Node::left, &Node::right);
            }
            else if (balance < -1)
            {
                if (heightOf(node->right->right) < heightOf(node->right->left))
                    rotate(node->right, &Node::left, &Node::right);
                node = rotate(node, &Node::right, &Node::left);
            }
            else
                updateHeight(node);
            if (node->height == before)
                return;
            node = node->parent;
        }
    }

    // Takes `node` out of the tree and restores the balance; freeing it is
    // left to the caller. A node with two subtrees gives its place to its
    // successor (the leftmost node of its right subtree), relinked, not
    // copied, so that iterators to the successor stay valid.
    void unlink(Node* node)
    {
        Node* changed = nullptr; // the lowest node whose subtree lost a node
        if (node->left != nullptr && node->right != nullptr)
        {
            Node* next = leftmost(node->right);
            if (next->parent == node)
                changed = next;
            else
            {
                changed = next->parent;
                changed->left = next->right;
                if (next->right != nullptr)
                    next->right->parent = changed;
                next->right = node->right;
                next->right->parent = next;
            }
            next->left = node->left;
            next->left->parent = next;
            next->height = node->height;
            replace(node, next);
        }
        else
        {
            changed = node->parent;
            replace(node, node->left != nullptr ? node->left : node->right);
        }
        rebalance(changed);
    }

    // Builds the shape of `other` node by node, walking both trees in step:
    // down to a child not yet copied, else up. On failure, what was built is
    // freed and the exception goes on.
    void copy(sorted_map const& other)
    {
        if (other.m_root == nullptr)
            return;
        try
        {
            Node const* from = other.m_root;
            Node* to = m_root = createNode(from->value, nullptr);
            while (to != nullptr)
            {
                if (from->left != nullptr && to->left == nullptr)
                {
                    to->left = createNode(from->left->value, to);
                    from = from->left;
                    to = to->left;
                }
                else if (from->right != nullptr && to->right == nullptr)
                {
                    to->right = createNode(from->right->value, to);
                    from = from->right;
                    to = to->right;
                }
                else
                {
                    to->height = from->height;
                    from = from->parent;
                    to = to->parent;
                }
            }
        }
        catch (...)
        {
            clear();
            throw;
        }
        m_size = other.m_size;
    }

    // A leaf under `parent`, not yet linked from it.
    Node* createNode(value_type const& value, Node* parent)
    {
        Node* node = static_cast<Node*>(m_allocator.allocate(sizeof(Node)));
        try
        {
            new (&node->value) value_type(value);
        }
        catch (...)
        {
            m_allocator.deallocate(node);
            throw;
        }
        node->left = nullptr;
        node->right = nullptr;
        node->parent = parent;
        node->height = 1;
        return node;
    }

    void destroyNode(Node* node)
    {
        node->value.~value_type();
        m_allocator.deallocate(node);
    }

    Node* m_root;
    unsigned m_size;
    Less m_less;
    Alloc m_allocator;
};

} // namespace Common
