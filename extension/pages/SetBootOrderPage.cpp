#include "collection/SetBootOrder.h"
#include "common/Conversion.h"
#include "extension/NSP.h"
#include "extension/pages/Pages.h"

namespace
{
const char kDevices[] =
    "{\"ErrorCode\":0,\"Order\":[{\"Name\":\"Default\",\"Value\":\"Default\"},{\"Name\":\"A:\","
    "\"Value\":\"floppy\"},{\"Name\":\"C:\",\"Value\":\"hd\"},{\"Name\":\"CD\",\"Value\":"
    "\"cdrom\"},{\"Name\":\"USB\",\"Value\":\"usb\"},{\"Name\":\"PXE\",\"Value\":\"pxe\"}],"
    "\"CurrentOrder\":[";

// The names of an order as a JSON list's items: each in double quotes,
// separated by ",". The default order (empty) gives no item.
Common::string quotedNames(const Common::string& order)
{
    Common::string items;
    if (order.empty())
        return items;
    Common::list<Common::istring> names = Common::istring(order).split(" ");
    for (Common::list<Common::istring>::const_iterator it = names.begin(); it != names.end(); ++it)
    {
        if (!items.empty())
            items += ",";
        items += "\"" + Common::string(*it) + "\"";
    }
    return items;
}
} // namespace

// "setbootorder.nsp": "Query" answers the fixed list of device choices and
// the current order; "Perform" sets the order from the repeated parameter
// "Order" and answers the order read back (none when it was refused).
void Pages::SetBootOrder(NSP& nsp)
{
    Collection::SetBootOrder bootOrder;
    if (!bootOrder.supported())
    {
        NotAvailable(nsp);
        return;
    }
    NSPRequest& request = nsp.request();
    Common::istring command = request("Command");
    Common::string order;
    if (command == "Query")
    {
        // An unreadable order answers as the default one.
        bootOrder.getOrder(order);
        nsp.response().Write(kDevices + quotedNames(order) + "]}");
    }
    else if (command == "Perform")
    {
        int result = bootOrder.setOrder(request.list("Order"));
        if (result == 0)
            bootOrder.getOrder(order);
        nsp.response().Write("{\"ErrorCode\":" + Conversion::toString(result) +
                             ",\"CurrentOrder\":[" + quotedNames(order) + "]}");
    }
}
