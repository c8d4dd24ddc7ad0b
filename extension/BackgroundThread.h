#pragma once

#include "common/String.h"
#include "common/Threadable.h"

// The start-up inventory job, run once on its own thread after
// the configuration has been read: it builds the storage inventory from
// "<content folder>/cfg/allboards.xml", saves it as
// "<content folder>/cfg/allstorage.xml" and primes the detection
// of the management processor. On a machine without a management processor
// the probe waits for the IPMI driver (about 6 seconds); a host that exits
// meanwhile waits for the job, which is joined when the module's statics go.
//
// The job gets its own copy of the content folder (made on the starting
// thread): strings count their references without a lock, so the job must
// not copy the global while requests copy it too.
class BackgroundThread : public Common::Synchronization::Threadable
{
public:
    explicit BackgroundThread(const Common::string& contentFolder);
    // The job. Catches everything: nothing may escape a thread.
    void Run() override;

private:
    void Work();

    Common::string m_contentFolder;
};
