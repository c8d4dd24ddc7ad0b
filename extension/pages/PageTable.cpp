#include "extension/pages/Pages.h"

namespace
{
struct Entry
{
    const char* name;
    Pages::Page run;
};

// The command pages. Names are compared ignoring case; each name is here once,
// so the order only says which name is compared first.
const Entry kPages[] = {
    {"index.nsp", &Pages::Index},
    {"allstorage.nsp", &Pages::AllStorage},
    {"debug.nsp", &Pages::Debug},
    {"hardware.nsp", &Pages::Hardware},
    {"wd100.nsp", &Pages::Wd100},
    {"ostree.nsp", &Pages::OSTree},
    {"fsetreset.nsp", &Pages::FSETReset},
    {"reboot.nsp", &Pages::Reboot},
    {"setbootorder.nsp", &Pages::SetBootOrder},
    {"system.nsp", &Pages::System},
    {"unattended.nsp", &Pages::Unattended},
};
} // namespace

Pages::Page Pages::find(const Common::istring& name)
{
    for (const Entry& entry : kPages)
    {
        if (name == entry.name)
            return entry.run;
    }
    return nullptr;
}
