#pragma once

namespace Collection
{

// One installable operating system of the catalogue: its identifier on the
// media and the display name the tree shows for it.
struct OSCatalogueEntry
{
    char const* osid;
    char const* name;
};

} // namespace Collection
