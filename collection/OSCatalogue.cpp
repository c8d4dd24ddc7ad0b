#include "collection/OSCatalogue.h"

namespace Collection
{
namespace OSCatalogue
{
namespace
{

// The names are shown to the user exactly as written here. Keep the irregular
// spellings ("Data Center" for 2008 beside "Datacenter" for 2003, the capital
// "B" of "(ZR-Branded)" at 5b0010): they are the catalogue's established texts.
// Entries stand in display order, which is deliberately not sorted.

OSCatalogueEntry const windows2003[] = {
    {"580002", "Microsoft Windows Server 2003, Standard Edition"},
    {"580005", "Microsoft Windows Server 2003, Standard Edition (ZR-branded)"},
    {"580004",
     "Microsoft Windows Server 2003, Standard Edition for Educational Use Only (ZR-branded)"},
    {"580003", "Microsoft Windows Server 2003, Enterprise Edition"},
    {"580006", "Microsoft Windows Server 2003, Enterprise Edition (ZR-branded)"},
    {"580001", "Microsoft Windows Server 2003, Web Edition"},
    {"580007", "Microsoft Windows Server 2003, Web Edition (ZR-branded)"},
    {"580008", "Microsoft Windows Small Business Server 2003"},
    {"580009", "Microsoft Windows Small Business Server 2003 (ZR-branded)"},
};

OSCatalogueEntry const windows2003R2[] = {
    {"580010", "Microsoft Windows Server 2003 R2, Standard Edition"},
    {"580012", "Microsoft Windows Server 2003 R2, Standard Edition (ZR-branded)"},
    {"580011", "Microsoft Windows Server 2003 R2, Enterprise Edition"},
    {"580013", "Microsoft Windows Server 2003 R2, Enterprise Edition (ZR-branded)"},
    {"580016", "Microsoft Windows Server 2003 R2, Datacenter Edition"},
    {"580014", "Microsoft Windows Small Business Server 2003 R2"},
    {"580015", "Microsoft Windows Small Business Server 2003 R2 (ZR-branded)"},
};

OSCatalogueEntry const windows2003x64[] = {
    {"590001", "Microsoft Windows Server 2003, Standard x64 Edition"},
    {"590004", "Microsoft Windows Server 2003, Standard x64 Edition (ZR-branded)"},
    {"590003",
     "Microsoft Windows Server 2003, Standard x64 Edition for Educational Use Only (ZR-branded)"},
    {"590002", "Microsoft Windows Server 2003, Enterprise x64 Edition"},
    {"590005", "Microsoft Windows Server 2003, Enterprise x64 Edition (ZR-branded)"},
};

OSCatalogueEntry const windows2003R2x64[] = {
    {"590006", "Microsoft Windows Server 2003 R2, Standard x64 Edition"},
    {"590008", "Microsoft Windows Server 2003 R2, Standard x64 Edition (ZR-branded)"},
    {"590007", "Microsoft Windows Server 2003 R2, Enterprise x64 Edition"},
    {"590009", "Microsoft Windows Server 2003 R2, Enterprise x64 Edition (ZR-branded)"},
    {"590010", "Microsoft Windows Server 2003 R2, Datacenter x64 Edition"},
};

OSCatalogueEntry const windows2008x32[] = {
    {"5a0001", "Microsoft Windows Server 2008, Standard Edition"},
    {"5a0002", "Microsoft Windows Server 2008, Standard Edition (ZR-branded)"},
    {"5a0003", "Microsoft Windows Server 2008, Standard Edition Core"},
    {"5a0004", "Microsoft Windows Server 2008, Standard Edition Core (ZR-branded)"},
    {"5a0005", "Microsoft Windows Server 2008, Enterprise Edition"},
    {"5a0006", "Microsoft Windows Server 2008, Enterprise Edition (ZR-branded)"},
    {"5a0007", "Microsoft Windows Server 2008, Enterprise Edition Core"},
    {"5a0008", "Microsoft Windows Server 2008, Enterprise Edition Core (ZR-branded)"},
    {"5a0009", "Microsoft Windows Server 2008, Data Center Edition"},
    {"5a0010", "Microsoft Windows Server 2008, Data Center Edition (ZR-branded)"},
    {"5a0011", "Microsoft Windows Server 2008, Data Center Edition Core"},
    {"5a0012", "Microsoft Windows Server 2008, Data Center Edition Core (ZR-branded)"},
    {"5a0013", "Microsoft Windows Server 2008, Web Server"},
    {"5a0014", "Microsoft Windows Server 2008, Web Server (ZR-branded)"},
    {"5a0015", "Microsoft Windows Server 2008, Web Server Core"},
    {"5a0016", "Microsoft Windows Server 2008, Web Server Core (ZR-branded)"},
};

OSCatalogueEntry const windows2008x64[] = {
    {"5b0001", "Microsoft Windows Server 2008 x64, Standard Edition"},
    {"5b0002", "Microsoft Windows Server 2008 x64, Standard Edition (ZR-branded)"},
    {"5b0003", "Microsoft Windows Server 2008 x64, Standard Edition Core"},
    {"5b0004", "Microsoft Windows Server 2008 x64, Standard Edition Core (ZR-branded)"},
    {"5b0005", "Microsoft Windows Server 2008 x64, Enterprise Edition"},
    {"5b0006", "Microsoft Windows Server 2008 x64, Enterprise Edition (ZR-branded)"},
    {"5b0007", "Microsoft Windows Server 2008 x64, Enterprise Edition Core"},
    {"5b0008", "Microsoft Windows Server 2008 x64, Enterprise Edition Core (ZR-branded)"},
    {"5b0009", "Microsoft Windows Server 2008 x64, Data Center Edition"},
    {"5b0010", "Microsoft Windows Server 2008 x64, Data Center Edition (ZR-Branded)"},
    {"5b0011", "Microsoft Windows Server 2008 x64, Data Center Edition Core"},
    {"5b0012", "Microsoft Windows Server 2008 x64, Data Center Edition Core (ZR-branded)"},
    {"5b0013", "Microsoft Windows Server 2008 x64, Web Server"},
    {"5b0014", "Microsoft Windows Server 2008 x64, Web Server (ZR-branded)"},
    {"5b0015", "Microsoft Windows Server 2008 x64, Web Server Core"},
    {"5b0016", "Microsoft Windows Server 2008 x64, Web Server Core (ZR-branded)"},
    {"5b0017", "Microsoft Windows Small Business Server 2008 x64, Standard Edition"},
    {"5b0034", "Microsoft Windows Server 2008, Foundation Server x64 (ZR-branded)"},
};

template <unsigned N> constexpr unsigned countOf(OSCatalogueEntry const (&)[N])
{
    return N;
}

OSCatalogueFolder const folders[FolderCount] = {
    {"Microsoft Windows 2003 x32 Edition", nullptr, 0, 2},
    {"Microsoft Windows 2003", windows2003, countOf(windows2003), 0},
    {"Microsoft Windows 2003 R2", windows2003R2, countOf(windows2003R2), 0},
    {"Microsoft Windows 2003 x64 Edition", nullptr, 0, 2},
    {"Microsoft Windows 2003 (x64)", windows2003x64, countOf(windows2003x64), 0},
    {"Microsoft Windows 2003 R2 (x64)", windows2003R2x64, countOf(windows2003R2x64), 0},
    {"Microsoft Windows 2008 x32 Edition", windows2008x32, countOf(windows2008x32), 0},
    {"Microsoft Windows 2008 x64 Edition", windows2008x64, countOf(windows2008x64), 0},
};

} // namespace

OSCatalogueFolder const& folder(unsigned index)
{
    return folders[index];
}

} // namespace OSCatalogue
} // namespace Collection
