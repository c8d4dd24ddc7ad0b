#include "collection/PCIStorageControllers.h"

#include "collection/BootControllerList.h"
#include "common/Conversion.h"
#include "common/ProcessMutex.h"
#include "common/ScopedMutexLock.h"
#include "common/Sort.h"
#include "common/system/PCI.h"
#include "common/system/SMBios.h"

namespace Collection
{

namespace
{
const unsigned char kMassStorage = 0x01;
const unsigned char kSerialBus = 0x0C;
const unsigned char kIDE = 0x01;
const unsigned char kFibreChannel = 0x04;
const unsigned char kEmbeddedIDERank = 1;

bool isStorageController(unsigned char classCode, unsigned char subclassCode)
{
    if (classCode == kMassStorage)
        return subclassCode == 0x00     // SCSI
               || subclassCode == kIDE  // IDE
               || subclassCode == 0x04  // RAID
               || subclassCode == 0x05  // ATA
               || subclassCode == 0x06  // SATA
               || subclassCode == 0x07; // SAS
    return classCode == kSerialBus && subclassCode == kFibreChannel;
}

// Servers whose firmware lists an IDE controller under the function before
// its own.
bool listsIDEOneFunctionLower(unsigned int serverID)
{
    return serverID == 725 || serverID == 747;
}

// The start-up job and a page request may build the list at the same time;
// the configuration ports (and the other hardware the list reads) serve one
// build at a time. Built when the module loads, so it outlives the job, which
// is joined when the module's statics go.
Common::Synchronization::ProcessMutex s_configurationPorts;

unsigned int serverID()
{
    Common::System::SMBios smbios;
    return Conversion::toNumber<unsigned int>(smbios.GetServerID());
}
} // namespace

PCIStorageControllers::PCIStorageControllers()
{
    Common::Synchronization::ScopedMutexLock building(s_configurationPorts);
    const unsigned int server = serverID();
    const BootControllerList firmwareOrder;
    typedef Common::System::PCI PCI;
    PCI::_PCI_ADDRESS address;
    PCI::InitializeEnumerate(address);
    while (PCI::EnumerateDevice(address))
    {
        unsigned short vendorID = 0, deviceID = 0;
        unsigned char classCode = 0, subclassCode = 0, slot = 0;
        unsigned int subsystemID = 0;
        PCI::VendorID(address, vendorID);
        PCI::DeviceID(address, deviceID);
        PCI::ClassCode(address, classCode);
        PCI::SubclassCode(address, subclassCode);
        PCI::SubsystemID(address, subsystemID);
        if (!isStorageController(classCode, subclassCode))
            continue;
        PCI::Slot(address, slot);

        const bool ide = classCode == kMassStorage && subclassCode == kIDE;
        unsigned char rank = BootControllerList::kUnranked;
        if (ide && slot == 0)
            rank = kEmbeddedIDERank;
        else
        {
            const unsigned char function = ide && listsIDEOneFunctionLower(server)
                                               ? static_cast<unsigned char>(address.function - 1)
                                               : address.function;
            rank = firmwareOrder.rank(address.bus, address.device, function, subsystemID);
        }
        m_controllers.push_back(PCIStorageController(address.bus, address.device, address.function,
                                                     vendorID, deviceID, classCode, subclassCode,
                                                     subsystemID, slot, rank));
    }

    Common::sort(m_controllers.begin(), m_controllers.end(),
                 Common::LessThanPredicate<PCIStorageController>());
    unsigned char position = 0;
    for (Controllers::iterator it = m_controllers.begin(); it != m_controllers.end(); ++it)
        it->CorrectBootOrder(position++);
}

} // namespace Collection
