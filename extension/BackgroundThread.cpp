#include "extension/BackgroundThread.h"

#include "collection/AllBoards.h"
#include "collection/AllStorage.h"
#include "collection/Warden100.h"

BackgroundThread::BackgroundThread(const Common::string& contentFolder)
    : m_contentFolder(contentFolder.c_str(), contentFolder.size()) // a copy of its own
{
}

void BackgroundThread::Run()
{
    try
    {
        Work();
    }
    catch (...)
    {
    }
}

// Everything the job builds is its own: strings made here from the job's copy
// of the content folder, the names database, the inventory and its document.
void BackgroundThread::Work()
{
    const Common::string boardsFile = m_contentFolder + "/cfg/allboards.xml";
    const Common::string storageFile = m_contentFolder + "/cfg/allstorage.xml";

    Common::shared_ptr<Collection::AllBoards> boards(new Collection::AllBoards(boardsFile));
    Collection::AllStorage(boards).Save(storageFile);

    // Asked once now, so that the pages that need the answer later have it
    // at once on a machine with a management processor.
    Collection::Warden100().isSupported();
}
