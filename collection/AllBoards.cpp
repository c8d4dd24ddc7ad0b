#include "collection/AllBoards.h"

#include "common/Hex.h"
#include "common/XML.h"
#include "common/filesystem/Filesystem.h"

namespace Collection
{

AllBoards::AllBoards(const Common::string& path) : m_root(new Common::XML::Element("null"))
{
    Common::string text;
    Common::Filesystem::getContents(path, text);
    Common::XML::Parser().XML(text, m_root);
}

Common::string AllBoards::deviceName(const unsigned short& vendor, const unsigned short& device,
                                     const unsigned int& subsystem) const
{
    Common::string name("Integrated PCI IDE Controller");
    if (m_root.get() == nullptr || !m_root->hasElement("PCI"))
        return name;

    const Common::string key = IN_HEX_4(vendor) + IN_HEX_4(device) + IN_HEX_8(subsystem);
    const Common::shared_ptr<Common::XML::Element> pci = m_root->getElement("PCI");
    // Every matching entry overwrites the name: where keys repeat, the last
    // entry wins.
    for (Common::XML::Element::ElementIterator it = pci->elementBegin(); it != pci->elementEnd();
         ++it)
    {
        if (it->get() == nullptr)
            continue;
        const Common::XML::Element& entry = **it;
        if (entry.tag() == "dev" && entry.hasAttribute("id") && entry.attribute("id") == key &&
            entry.hasElement("name"))
            name = entry.getElement("name")->text();
    }
    return name;
}

} // namespace Collection
