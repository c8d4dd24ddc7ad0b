#pragma once

#include "collection/OSCatalogueEntry.h"

namespace Collection
{

// One folder of the catalogue. A group holds no entries of its own; its
// `subfolderCount` subfolders follow it directly in the catalogue's folder
// table, so a walk of the table in order meets every group before its
// subfolders.
struct OSCatalogueFolder
{
    char const* name;
    OSCatalogueEntry const* entries;
    unsigned entryCount;
    unsigned subfolderCount;
};

} // namespace Collection
