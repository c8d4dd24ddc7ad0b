#pragma once

#include "collection/IPLTable.h"
#include "common/IString.h"
#include "common/List.h"
#include "common/String.h"

namespace Collection
{

// The order in which the server tries its boot devices, by device name
// ("floppy", "hd", "cdrom", "usb", "pxe", ...). Two ways exist, chosen per
// machine:
// - the ROM path, where the ROM has environment variables and an IPL table:
//   the order is the ROM variable "RXHIPL", one IPL-table index per byte;
// - the IPMI path otherwise: one boot device, set as a persistent boot-flags
//   override through the management controller.
//
// Built per request (it reads the IPL table on construction). The device
// name maps are filled once per process, by the path of the first object.
class SetBootOrder : public IPLTable
{
public:
    SetBootOrder();

    // ROM variables with a non-empty IPL table, or else a management
    // controller. Worked out on the first call and kept for the process.
    bool supported() const;

    // 0 when set (a failed write is not reported), 2 for a device name the
    // path does not know (nothing is written then). The ROM path takes every
    // name, each adding all IPL entries of its type (at most 16 in all);
    // none, or "default" anywhere, restores the ROM's default order. The
    // IPMI path takes only the first name.
    int setOrder(const Common::list<Common::istring>& names);
    // The device names separated by single blanks; empty for the ROM's
    // default order. 0, or 3 when the ROM variable cannot be read.
    int getOrder(Common::string& order);

private:
    bool m_romPath;
};

} // namespace Collection
