#include "collection/AllBoards.h"

#include "common/XML.h"
#include "common/filesystem/Filesystem.h"

namespace Collection
{

namespace
{
Common::shared_ptr<Common::XML::Element> load(const Common::string& path)
{
    Common::shared_ptr<Common::XML::Element> root(new Common::XML::Element("null"));
    Common::string text;
    Common::Filesystem::getContents(path, text);
    Common::XML::Parser().XML(text, root);
    return root;
}
} // namespace

// The first "PCI" element holds the entries; without one, getElement gives a
// detached empty element and so an empty index.
AllBoards::AllBoards(const Common::string& path)
    : m_root(load(path)), m_names(*m_root->getElement("PCI"))
{
}

Common::string AllBoards::deviceName(const unsigned short& vendor, const unsigned short& device,
                                     const unsigned int& subsystem) const
{
    const Common::XML::Element* name = m_names.find(vendor, device, subsystem);
    return name != nullptr ? name->text() : Common::string("Integrated PCI IDE Controller");
}

} // namespace Collection
