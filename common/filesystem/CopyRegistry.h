#pragma once

#include "common/Map.h"
#include "common/String.h"
#include "common/filesystem/CopyThread.h"

namespace Common
{
namespace Synchronization
{
class Thread;
}

namespace Filesystem
{

// The background copies of the system page, each under the caller's key
// (compared case-sensitively). The registry owns every copy and its thread.
//
// Not synchronized: use one registry from one thread (the request thread).
// Destroying it stops every copy at its next file boundary and waits for it.
class CopyRegistry
{
public:
    CopyRegistry() {}
    ~CopyRegistry();
    CopyRegistry(CopyRegistry const&) = delete;
    CopyRegistry& operator=(CopyRegistry const&) = delete;

    // Starts copying on a thread of its own. False when the key is already
    // registered (that copy is left alone) or no thread could be started.
    bool Start(string const& key, string const& source, string const& destination);

    // The progress of the copy under `key`; false for an unknown key. Once
    // the copy has ended (`running` false), the counts are final and the key
    // is forgotten: they are reported once, and the key is unknown afterwards.
    bool progress(string const& key, CopyThread::_COPY_STATUS& status, bool& running);

private:
    map<string, CopyThread*> m_copies;
    map<string, Synchronization::Thread*> m_threads;
};

} // namespace Filesystem
} // namespace Common
