#include "platform/Hardware.h"
#include "platform/ProcPCI.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

// The entries of one folder, taken at once, and how far the caller has read.
struct PCIListing
{
    Common::list<Common::Platform::FolderEntry> entries;
    Common::list<Common::Platform::FolderEntry>::const_iterator next;
};

namespace
{
bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// The listing of `folder`, or null when it cannot be listed.
PCIListing* openListing(char const* folder)
{
    PCIListing* listing = new (std::nothrow) PCIListing;
    if (listing == nullptr)
        return nullptr;
    if (!Common::Platform::hardware().listFolder(folder, listing->entries))
    {
        delete listing;
        return nullptr;
    }
    listing->next = listing->entries.begin();
    return listing;
}

// The next entry's name, or null after closing the listing at its end.
char const* nextName(PCIListing** dir)
{
    if (dir == nullptr || *dir == nullptr)
        return nullptr;
    if ((*dir)->next != (*dir)->entries.end())
        return ((*dir)->next++)->name.c_str();
    delete *dir;
    *dir = nullptr;
    return nullptr;
}

void closeListing(PCIListing** dir)
{
    delete *dir;
    *dir = nullptr;
}
int endWalk(_PCI_ITER* iter)
{
    closeListing(&iter->deviceDirectory);
    closeListing(&iter->busDirectory);
    iter->bus = -1;
    return -1;
}
} // namespace

extern "C"
{

    int first_bus(PCIListing** dir)
    {
        if (dir == nullptr)
            return -1;
        *dir = openListing("/proc/bus/pci");
        return next_bus(dir);
    }

    int next_bus(PCIListing** dir)
    {
        // Only names of exactly two hexadecimal digits are buses ("devices",
        // "." and ".." are not).
        while (char const* name = nextName(dir))
            if (std::strlen(name) == 2 && isHexDigit(name[0]) && isHexDigit(name[1]))
                return static_cast<int>(std::strtoul(name, nullptr, 16));
        return -1;
    }

    int first_device(PCIListing** dir, int bus)
    {
        if (dir == nullptr)
            return -1;
        char folder[32];
        std::snprintf(folder, sizeof folder, "/proc/bus/pci/%2.2x", bus);
        *dir = openListing(folder);
        return next_device(dir);
    }

    int next_device(PCIListing** dir)
    {
        // "DD.F": the device is the hex number at the start, the function the
        // one from the fourth character.
        while (char const* name = nextName(dir))
        {
            if (std::strlen(name) < 4)
                continue;
            unsigned long device = std::strtoul(name, nullptr, 16);
            unsigned long function = std::strtoul(name + 3, nullptr, 16);
            return static_cast<int>((device & 0x1F) << 3 | (function & 0x07));
        }
        return -1;
    }

    int first_pci_device(_PCI_ITER* iter)
    {
        if (iter == nullptr)
            return -1;
        iter->busDirectory = nullptr;
        iter->deviceDirectory = nullptr;
        iter->bus = first_bus(&iter->busDirectory);
        if (iter->bus < 0)
            return endWalk(iter);
        int devfn = first_device(&iter->deviceDirectory, iter->bus);
        if (devfn < 0)
            return endWalk(iter);
        return iter->bus << 8 | devfn;
    }

    int next_pci_device(_PCI_ITER* iter)
    {
        if (iter == nullptr || iter->bus < 0)
            return -1;
        int devfn = next_device(&iter->deviceDirectory);
        if (devfn >= 0)
            return iter->bus << 8 | devfn;
        iter->bus = next_bus(&iter->busDirectory);
        if (iter->bus < 0)
            return endWalk(iter);
        // A bus without devices gives -1 here, which the or keeps: the walk ends.
        int value = iter->bus << 8 | first_device(&iter->deviceDirectory, iter->bus);
        return value < 0 ? endWalk(iter) : value;
    }

    int compute_predecessor_bridge(int* table, int n)
    {
        if (table == nullptr || n < 0)
            return -1;
        for (int i = 0; i < n; ++i)
            table[i] = -1;
        int highest = -1;
        _PCI_ITER iter;
        for (int value = first_pci_device(&iter); value >= 0; value = next_pci_device(&iter))
        {
            int bus = value >> 8;
            int device = (value & 0xFF) >> 3;
            int function = value & 0x07;
            if (bus > highest)
                highest = bus;
            unsigned char baseClass;
            unsigned char subclass;
            unsigned char secondary;
            if (pci_read_config_byte(bus, device, function, 0x0B, &baseClass) != 0 ||
                pci_read_config_byte(bus, device, function, 0x0A, &subclass) != 0 ||
                baseClass != 6 || subclass != 4)
                continue;
            if (pci_read_config_byte(bus, device, function, 0x19, &secondary) == 0 && secondary < n)
                table[secondary] = value;
        }
        return highest;
    }

} // extern "C"
