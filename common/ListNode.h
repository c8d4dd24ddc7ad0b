#pragma once

namespace Common
{

// One link of a Common::list: the neighbours, then the value stored inline.
template <class T> struct ListNode
{
    ListNode* next;
    ListNode* prev;
    T value;
};

} // namespace Common
