#include "collection/AllStorage.h"

#include "collection/PCIStorageControllers.h"
#include "common/Conversion.h"
#include "common/Format.h"
#include "common/Hex.h"
#include "common/OutputStreamToFile.h"
#include "common/Sort.h"
#include "common/XML.h"
#include "common/system/KernelFiles.h"

namespace Collection
{

namespace
{
typedef Common::shared_ptr<Common::XML::Element> ElementPointer;

const char kOlderEntryPrefix[] = "block:";
const char kBlockFolder[] = "block";

bool beginsWith(const Common::string& text, const char* prefix)
{
    return text.find(prefix) == 0;
}

void sortNames(Common::list<Common::string>& names)
{
    Common::sort(names.begin(), names.end(), Common::LessThanPredicate<Common::string>());
}

// "0000:bb:dd.f/" under the sysfs folder of PCI devices: bus and device in
// two lower-case hexadecimal digits, the function in decimal.
Common::string deviceFolder(const PCIStorageController& controller)
{
    return "/sys/bus/pci/devices/" +
           Common::formatShort("0000:%02x:%02x.%u/", controller.bus(), controller.device(),
                               static_cast<unsigned>(controller.function()));
}

// The kernel name of a disk entry: what follows the last "block:", or the
// last folder name of the "block" folder layout.
Common::string kernelName(const Common::string& entry)
{
    const unsigned older = entry.rfind(kOlderEntryPrefix);
    if (older != Common::string::npos)
        return entry.substr(older + sizeof kOlderEntryPrefix - 1);
    return entry.substr(entry.rfind('/') + 1);
}

Common::string readBlockAttribute(const Common::string& name, const char* attribute)
{
    Common::string text;
    Common::System::KernelFiles::read("/sys/block/" + name + "/" + attribute, text);
    return text;
}

ElementPointer controllerElement(const PCIStorageController& controller, unsigned index,
                                 const Common::string& name)
{
    ElementPointer device(new Common::XML::Element("PCIDevice"));
    device->Attribute("Index", Conversion::toString(index));
    device->Attribute("Name", name);
    device->Attribute("Bus", IN_HEX_2(controller.bus()));
    device->Attribute("Device", IN_HEX_2(controller.device()));
    device->Attribute("Function", IN_HEX_2(controller.function()));
    device->Attribute("VendorID", IN_HEX_4(controller.vendorID()));
    device->Attribute("DeviceID", IN_HEX_4(controller.deviceID()));
    device->Attribute("ClassCode", IN_HEX_2(controller.classCode()));
    device->Attribute("SubClassCode", IN_HEX_2(controller.subclassCode()));
    device->Attribute("SubsystemID", IN_HEX_8(controller.subsystemID()));
    device->Attribute("Slot", Conversion::toString(controller.slot()));
    device->Attribute("BootOrder", Conversion::toString(controller.bootOrder()));
    return device;
}

// Appends one "BlockDevice" per fixed disk of non-zero size; returns how
// many.
unsigned addDisks(const PCIStorageController& controller, Common::XML::Element& device)
{
    Common::list<Common::string> entries;
    AllStorage::BlockList(deviceFolder(controller), entries);
    unsigned count = 0;
    for (Common::list<Common::string>::const_iterator it = entries.begin(); it != entries.end();
         ++it)
    {
        const Common::string name = kernelName(*it);
        const unsigned int removable =
            Conversion::toNumber<unsigned int>(readBlockAttribute(name, "removable"));
        const unsigned long long bytes =
            Conversion::toNumber<unsigned long long>(readBlockAttribute(name, "size")) * 512;
        if (removable != 0 || bytes == 0)
            continue;
        ElementPointer disk(new Common::XML::Element("BlockDevice"));
        disk->Attribute("Index", Conversion::toString(count));
        disk->Attribute("DeviceNode", "/dev/" + Common::Replace(name, "!", "/"));
        disk->Attribute("DriveNumber", Conversion::toString(count + 1));
        disk->Attribute("Removable", "0");
        disk->Attribute("Size", Conversion::toString(bytes));
        device.AddElement(disk);
        ++count;
    }
    return count;
}
} // namespace

AllStorage::AllStorage(Common::shared_ptr<AllBoards> boards)
    : m_boards(boards), m_root(new Common::XML::Element("AllStorage"))
{
    const PCIStorageControllers controllers;
    unsigned index = 0;
    for (PCIStorageControllers::Controllers::const_iterator it = controllers.begin();
         it != controllers.end(); ++it, ++index)
    {
        const Common::string name =
            m_boards.get() != nullptr
                ? m_boards->deviceName(it->vendorID(), it->deviceID(), it->subsystemID())
                : Common::string();
        ElementPointer device = controllerElement(*it, index, name);
        m_root->AddElement(device);
        device->Attribute("BlockDeviceCount", Conversion::toString(addDisks(*it, *device)));
    }
    m_root->Attribute("PCIDeviceCount", Conversion::toString(index));
}

Common::string AllStorage::toXMLString() const
{
    return Common::XML::Parser().xml(m_root);
}

bool AllStorage::Save(const Common::string& path) const
{
    Common::OutputStreamToFile file(path, false);
    if (!file.isOpen())
        return false;
    file << toXMLString();
    return true;
}

void AllStorage::BlockList(const Common::string& directory, Common::list<Common::string>& out)
{
    Common::list<Common::Platform::FolderEntry> entries;
    Common::System::KernelFiles::listFolder(directory, entries);
    for (Common::list<Common::Platform::FolderEntry>::const_iterator it = entries.begin();
         it != entries.end(); ++it)
    {
        const Common::string path = directory + it->name;
        if (beginsWith(it->name, kOlderEntryPrefix))
            out.push_back(path);
        else if (it->symbolicLink || !it->folder)
            continue;
        else if (it->name == kBlockFolder)
        {
            Common::list<Common::Platform::FolderEntry> disks;
            Common::System::KernelFiles::listFolder(path, disks);
            for (Common::list<Common::Platform::FolderEntry>::const_iterator disk = disks.begin();
                 disk != disks.end(); ++disk)
                if (disk->folder || disk->symbolicLink)
                    out.push_back(path + "/" + disk->name);
        }
        else
            BlockList(path + "/", out);
    }
    sortNames(out);
}

} // namespace Collection
