#pragma once

#include "common/List.h"
#include "common/Thread.h"

namespace Common
{
namespace Synchronization
{

// A set of threads to be joined together. The group does not own its
// threads: they must outlive it or be removed first.
class ThreadGroup
{
public:
    // Adds `thread` at the end (a null pointer is ignored).
    void Add(Thread* thread);
    // Takes every occurrence of `thread` out of the group.
    void Remove(Thread* thread);
    // Joins every member in the order added; members stay in the group.
    void JoinAll();

private:
    list<Thread*> m_threads;
};

} // namespace Synchronization
} // namespace Common
