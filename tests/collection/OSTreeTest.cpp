#include "collection/OSTree.h"

#include "ExpectedFiles.h"
#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
std::string tree(char const* osidList)
{
    return text(Collection::OSTree(osidList, "").toString());
}

std::string folder(char const* name, std::string const& children)
{
    return std::string("{name:'") + name + "',type:'treeiconfolder',selected:false,children:[" +
           children + "]}";
}

std::string entry(char const* osid, char const* name)
{
    return std::string("{ type:'treeiconcd',selected:false,osid:'") + osid + "',name:'" + name +
           "' }";
}
} // namespace

// Only folders holding an offered system are shown, systems in catalogue
// order; identifiers are not trimmed nor compared in another letter case.
TEST(OSTree, FoldersOfTheOfferedSystemsInCatalogueOrder)
{
    std::string const standard2003 = entry("580002", "Microsoft Windows Server 2003, Standard Edition");
    std::string const x32 = "Microsoft Windows 2003 x32 Edition";
    const struct
    {
        char const* list;
        std::string items;
    } cases[] = {
        {"580002,5b0001",
         folder(x32.c_str(), folder("Microsoft Windows 2003", standard2003)) + "," +
             folder("Microsoft Windows 2008 x64 Edition",
                    entry("5b0001", "Microsoft Windows Server 2008 x64, Standard Edition"))},
        {"580001,580002",
         folder(x32.c_str(),
                folder("Microsoft Windows 2003",
                       standard2003 + "," +
                           entry("580001", "Microsoft Windows Server 2003, Web Edition")))},
        {"580002, 5b0001,5B0001", folder(x32.c_str(), folder("Microsoft Windows 2003", standard2003))},
        {"5a0009,590002",
         folder("Microsoft Windows 2003 x64 Edition",
                folder("Microsoft Windows 2003 (x64)",
                       entry("590002", "Microsoft Windows Server 2003, Enterprise x64 Edition"))) +
             "," +
             folder("Microsoft Windows 2008 x32 Edition",
                    entry("5a0009", "Microsoft Windows Server 2008, Data Center Edition"))},
        {"580016", folder(x32.c_str(),
                          folder("Microsoft Windows 2003 R2",
                                 entry("580016", "Microsoft Windows Server 2003 R2, Datacenter Edition")))},
    };
    for (auto const& c : cases)
        EXPECT_EQ(tree(c.list), "{label:'name',identifier:'name',items:[" + c.items + "]}") << c.list;

    // The whole catalogue from a list reversed, with duplicates, unknown
    // identifiers and empty fields.
    std::string all = expected("ostree-all.txt");
    std::vector<std::string> ids;
    for (std::size_t at = all.find("osid:'"); at != std::string::npos; at = all.find("osid:'", at + 1))
        ids.push_back(all.substr(at + 6, 6));
    ASSERT_EQ(ids.size(), 60u);
    std::string list = "999999,,";
    for (auto it = ids.rbegin(); it != ids.rend(); ++it)
        list += *it + "," + *it + ",";
    EXPECT_EQ(tree(list.c_str()), all);
}
