#pragma once

namespace Common
{

// One node of a Common::sorted_map: its links, the height of the subtree it
// roots (1 for a leaf), then the entry stored inline. The root's parent is
// null.
template <class T> struct SortedMapNode
{
    SortedMapNode* left;
    SortedMapNode* right;
    SortedMapNode* parent;
    unsigned char height;
    T value;
};

} // namespace Common
