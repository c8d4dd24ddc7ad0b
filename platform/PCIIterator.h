#pragma once

// An open listing of a folder under "/proc/bus/pci", read through the
// hardware seam. The function that meets the end of the listing frees it and
// sets the caller's pointer to null; an abandoned listing leaks.
struct PCIListing;

// A walk over every function listed under "/proc/bus/pci" (first_pci_device,
// next_pci_device). The walk closes its listings when it ends; abandoning it
// early leaks them.
struct _PCI_ITER
{
    int bus; // negative once the walk has ended
    PCIListing* busDirectory;
    PCIListing* deviceDirectory;
};
