#include "collection/PCIStorageController.h"

namespace Collection
{

PCIStorageController::PCIStorageController()
    : m_bus(0), m_device(0), m_function(0), m_vendorID(0), m_deviceID(0), m_classCode(0),
      m_subclassCode(0), m_subsystemID(0), m_slot(0), m_bootOrder(0)
{
}

PCIStorageController::PCIStorageController(
    const unsigned char& bus, const unsigned char& device, const unsigned char& function,
    const unsigned short& vendorID, const unsigned short& deviceID, const unsigned char& classCode,
    const unsigned char& subclassCode, const unsigned int& subsystemID, const unsigned char& slot,
    const unsigned char& bootOrder)
    : m_bus(bus), m_device(device), m_function(function), m_vendorID(vendorID),
      m_deviceID(deviceID), m_classCode(classCode), m_subclassCode(subclassCode),
      m_subsystemID(subsystemID), m_slot(slot), m_bootOrder(bootOrder)
{
}

bool operator<(const PCIStorageController& a, const PCIStorageController& b)
{
    return a.bootOrder() < b.bootOrder();
}

} // namespace Collection
