#pragma once

namespace Collection
{

// One storage controller on the PCI bus: its address, identity, the routing
// table's slot number (0 = embedded or not listed, 255 = no table) and its
// rank in the firmware's boot-controller order. A plain value.
class PCIStorageController
{
public:
    PCIStorageController();
    PCIStorageController(const unsigned char& bus, const unsigned char& device,
                         const unsigned char& function, const unsigned short& vendorID,
                         const unsigned short& deviceID, const unsigned char& classCode,
                         const unsigned char& subclassCode, const unsigned int& subsystemID,
                         const unsigned char& slot, const unsigned char& bootOrder);

    unsigned char bus() const { return m_bus; }
    unsigned char device() const { return m_device; }
    unsigned char function() const { return m_function; }
    unsigned short vendorID() const { return m_vendorID; }
    unsigned short deviceID() const { return m_deviceID; }
    unsigned char classCode() const { return m_classCode; }
    unsigned char subclassCode() const { return m_subclassCode; }
    // Subsystem vendor ID in the high half, subsystem ID in the low half.
    unsigned int subsystemID() const { return m_subsystemID; }
    unsigned char slot() const { return m_slot; }
    unsigned char bootOrder() const { return m_bootOrder; }

    void CorrectBootOrder(const unsigned char& order) { m_bootOrder = order; }

private:
    unsigned char m_bus;
    unsigned char m_device;
    unsigned char m_function;
    unsigned short m_vendorID;
    unsigned short m_deviceID;
    unsigned char m_classCode;
    unsigned char m_subclassCode;
    unsigned int m_subsystemID;
    unsigned char m_slot;
    unsigned char m_bootOrder;
};

// Orders by boot rank only.
bool operator<(const PCIStorageController& a, const PCIStorageController& b);

} // namespace Collection
