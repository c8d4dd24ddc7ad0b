#include "extension/BackgroundThread.h"

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

// The job's body: the one place to fill when the hardware inventory lands.
// 1. names: m_contentFolder + "/cfg/allboards.xml" and
//    m_contentFolder + "/cfg/allstorage.xml";
// 2. Collection::AllBoards over the first, Collection::AllStorage over it,
//    Save to the second;
// 3. Collection::Warden100().isSupported(), the answer dropped.
void BackgroundThread::Work() {}
