#include "collection/OSTree.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"

// "ostree.nsp": the tree of the operating systems named in "OSIDList", as a
// JavaScript object literal written as the whole answer (no "ErrorCode").
void Pages::OSTree(NSP& nsp)
{
    NSPRequest& request = nsp.request();
    Collection::OSTree tree(Common::string(request("OSIDList")),
                            Common::string(request("Selected")));
    nsp.response().Write(tree.toString());
}
