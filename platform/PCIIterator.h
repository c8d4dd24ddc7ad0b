#pragma once

#include <dirent.h>

// A walk over every function listed under "/proc/bus/pci" (first_pci_device,
// next_pci_device). The walk closes its directories when it ends; abandoning
// it early leaks them.
struct _PCI_ITER
{
    int bus; // negative once the walk has ended
    DIR* busDirectory;
    DIR* deviceDirectory;
};
