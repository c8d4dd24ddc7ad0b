#pragma once

#include "collection/PCIStorageController.h"
#include "common/List.h"

namespace Collection
{

// Every storage controller on the PCI bus (SCSI, IDE, RAID, ATA, SATA, SAS
// and Fibre Channel functions), in the firmware's boot-controller order with
// bootOrder() equal to the position from 0.
//
// Ranks come from the "RXHORD" records (BootControllerList). An IDE
// controller in slot 0 (the embedded one) is placed as the firmware's second
// entry without a look-up; on servers 725 and 747 an IDE controller is
// looked up under its function minus one. Controllers of equal rank stay in
// the order the list sort leaves them; controllers the firmware does not
// list come last.
//
// Builds take turns at the hardware (SMBIOS, the ROM, the PCI configuration
// ports), so two threads may build lists at once; other users of that
// hardware do not take part in the turn.
class PCIStorageControllers
{
public:
    typedef Common::list<PCIStorageController> Controllers;

    PCIStorageControllers();

    Controllers::const_iterator begin() const { return m_controllers.begin(); }
    Controllers::const_iterator end() const { return m_controllers.end(); }

private:
    Controllers m_controllers;
};

} // namespace Collection
