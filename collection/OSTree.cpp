#include "collection/OSTree.h"

namespace Collection
{

OSTree::OSTree(Common::string const& osidList, Common::string const& selected)
    : m_offered(osidList.split(",")), m_selected(selected)
{
    for (unsigned i = 0; i < OSCatalogue::FolderCount; ++i)
    {
        OSCatalogueFolder const& folder = OSCatalogue::folder(i);
        m_folderOffered[i] = false;
        for (unsigned e = 0; e < folder.entryCount; ++e)
            m_folderOffered[i] = m_folderOffered[i] || isOffered(folder.entries[e].osid);
    }
    // Subfolders follow their group, so each group's flags are all known here.
    for (unsigned i = 0; i < OSCatalogue::FolderCount; ++i)
        for (unsigned s = 1; s <= OSCatalogue::folder(i).subfolderCount; ++s)
            m_folderOffered[i] = m_folderOffered[i] || m_folderOffered[i + s];
}

Common::string OSTree::toString() const
{
    Common::string out("{label:'name',identifier:'name',items:[");
    writeFolders(out, 0, OSCatalogue::FolderCount);
    out += "]}";
    return out;
}

bool OSTree::isOffered(char const* osid) const
{
    for (Common::list<Common::string>::const_iterator it = m_offered.begin(); it != m_offered.end();
         ++it)
        if (*it == osid)
            return true;
    return false;
}

void OSTree::writeFolders(Common::string& out, unsigned first, unsigned end) const
{
    bool firstWritten = true;
    for (unsigned i = first; i < end; i += 1 + OSCatalogue::folder(i).subfolderCount)
    {
        if (!m_folderOffered[i])
            continue;
        OSCatalogueFolder const& folder = OSCatalogue::folder(i);
        if (!firstWritten)
            out += ",";
        firstWritten = false;
        out += "{name:'";
        out += folder.name;
        out += "',type:'treeiconfolder',selected:false,children:[";
        writeFolders(out, i + 1, i + 1 + folder.subfolderCount);
        writeEntries(out, folder);
        out += "]}";
    }
}

void OSTree::writeEntries(Common::string& out, OSCatalogueFolder const& folder) const
{
    bool firstWritten = true;
    for (unsigned e = 0; e < folder.entryCount; ++e)
    {
        OSCatalogueEntry const& entry = folder.entries[e];
        if (!isOffered(entry.osid))
            continue;
        if (!firstWritten)
            out += ",";
        firstWritten = false;
        out += "{ type:'treeiconcd',selected:false,osid:'";
        out += entry.osid;
        out += "',name:'";
        out += entry.name;
        out += "' }";
    }
}

} // namespace Collection
