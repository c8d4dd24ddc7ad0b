#include "collection/AllBoards.h"
#include "collection/AllStorage.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "allstorage.nsp": Command=Create builds the storage inventory, naming the
// controllers from the database at "AllBoardsXML", and writes it to
// "AllStorageXML". Whether the file could be written is not reported.
void Pages::AllStorage(NSP& nsp)
{
    NSPRequest& request = nsp.request();
    if (request("Command") != "Create")
    {
        nsp.response().Write("{\"ErrorCode\":1}");
        return;
    }
    Common::shared_ptr<Collection::AllBoards> boards(
        new Collection::AllBoards(Common::string(request("AllBoardsXML"))));
    Collection::AllStorage(boards).Save(Common::string(request("AllStorageXML")));
    nsp.response().Write("{\"ErrorCode\":0}");
}
