#pragma once

#include "collection/OSCatalogueFolder.h"

namespace Collection
{
namespace OSCatalogue
{

// The folders, in display order and in the order of OSTree's folder flags:
// 2003 x32 group, its "2003" and "2003 R2" subfolders, 2003 x64 group, its two
// subfolders, 2008 x32, 2008 x64.
unsigned const FolderCount = 8;

// `index` must be below FolderCount.
OSCatalogueFolder const& folder(unsigned index);

} // namespace OSCatalogue
} // namespace Collection
