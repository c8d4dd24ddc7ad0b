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
    // Built once: the walk visits every entry of a database of tens of
    // thousands.
    const Common::string entryTag("dev");
    const Common::string keyAttribute("id");
    const Common::string nameTag("name");
    const Common::shared_ptr<Common::XML::Element> pci = m_root->getElement("PCI");
    // Every matching entry overwrites the name: where keys repeat, the last
    // entry wins. The key is never empty, so an entry without "id" (read as
    // "") never matches.
    for (Common::XML::Element::ElementIterator it = pci->elementBegin(); it != pci->elementEnd();
         ++it)
    {
        if (it->get() == nullptr)
            continue;
        const Common::XML::Element& entry = **it;
        if (entry.tag() == entryTag && entry.attribute(keyAttribute) == key &&
            entry.hasElement(nameTag))
            name = entry.getElement(nameTag)->text();
    }
    return name;
}

} // namespace Collection
