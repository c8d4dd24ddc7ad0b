#pragma once

#include "common/ProcessMutex.h"

namespace Common
{
namespace Synchronization
{

// A ProcessMutex that the thread holding it may lock again; it is free once
// every Lock has been matched by an Unlock.
class RecursiveProcessMutex : public ProcessMutex
{
public:
    RecursiveProcessMutex() : ProcessMutex(PTHREAD_MUTEX_RECURSIVE) {}
};

} // namespace Synchronization
} // namespace Common
