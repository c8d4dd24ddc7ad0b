#pragma once

#include "collection/OSCatalogue.h"
#include "common/List.h"
#include "common/String.h"

namespace Collection
{

// The tree of installable operating systems for the setup UI's tree widget:
// the folders and entries of the fixed catalogue whose identifiers the media
// offers, as a one-line JavaScript object literal (single quotes, unquoted
// keys; not JSON). Names and identifiers are written as they stand, unescaped.
class OSTree
{
public:
    // `osidList` is split at every ","; identifiers match exactly
    // (case-sensitive, no trimming), unknown ones are ignored.
    OSTree(Common::string const& osidList, Common::string const& selected);

    // The tree text. Every node carries "selected:false": the selected
    // identifier is kept, but the tree does not mark it.
    Common::string toString() const;

    Common::string const& selected() const { return m_selected; }

private:
    bool isOffered(char const* osid) const;
    // Writes the folders with flags set among the table range [first, end),
    // skipping over each group's subfolders, which the group writes itself.
    void writeFolders(Common::string& out, unsigned first, unsigned end) const;
    void writeEntries(Common::string& out, OSCatalogueFolder const& folder) const;

    Common::list<Common::string> m_offered;
    Common::string m_selected;
    // One flag per catalogue folder, in catalogue order: a folder is offered
    // when one of its entries is; a group when one of its subfolders is.
    bool m_folderOffered[OSCatalogue::FolderCount];
};

} // namespace Collection
