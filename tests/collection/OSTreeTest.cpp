#include "collection/OSTree.h"

#include "ExpectedFiles.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
std::string tree(char const* osidList)
{
    Common::string text = Collection::OSTree(osidList, "").toString();
    return std::string(text.c_str(), text.size());
}

std::string const head = "{label:'name',identifier:'name',items:[";

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

std::string const standard2003 = entry("580002", "Microsoft Windows Server 2003, Standard Edition");
std::string const web2003 = entry("580001", "Microsoft Windows Server 2003, Web Edition");
std::string const standard2008x64 =
    entry("5b0001", "Microsoft Windows Server 2008 x64, Standard Edition");
} // namespace

TEST(OSTree, ExamplesOfThePage)
{
    EXPECT_EQ(tree(""), head + "]}");
    EXPECT_EQ(tree("580002,5b0001"),
              head +
                  folder("Microsoft Windows 2003 x32 Edition",
                         folder("Microsoft Windows 2003", standard2003)) +
                  "," + folder("Microsoft Windows 2008 x64 Edition", standard2008x64) + "]}");
    // Catalogue order, not list order.
    EXPECT_EQ(tree("580001,580002"),
              head +
                  folder("Microsoft Windows 2003 x32 Edition",
                         folder("Microsoft Windows 2003", standard2003 + "," + web2003)) +
                  "]}");
    // No trimming: " 5b0001" is no catalogue identifier, nor is "5B0001".
    EXPECT_EQ(tree("580002, 5b0001,5B0001"),
              head +
                  folder("Microsoft Windows 2003 x32 Edition",
                         folder("Microsoft Windows 2003", standard2003)) +
                  "]}");
}

TEST(OSTree, WholeCatalogueInCatalogueOrderWhateverTheList)
{
    std::string all = expected("ostree-all.txt");
    std::vector<std::string> ids;
    for (std::size_t at = all.find("osid:'"); at != std::string::npos;
         at = all.find("osid:'", at + 1))
        ids.push_back(all.substr(at + 6, 6));
    ASSERT_EQ(ids.size(), 60u);

    // Reversed, with duplicates, unknown identifiers and empty fields.
    std::string list = "999999,,";
    for (auto it = ids.rbegin(); it != ids.rend(); ++it)
        list += *it + "," + *it + ",";
    EXPECT_EQ(tree(list.c_str()), all);
}

TEST(OSTree, OnlyFoldersWithOfferedSystemsAreShown)
{
    const std::string r2 = entry("580016", "Microsoft Windows Server 2003 R2, Datacenter Edition");
    const std::string x64 = entry("590002", "Microsoft Windows Server 2003, Enterprise x64 Edition");
    const std::string x32 = entry("5a0009", "Microsoft Windows Server 2008, Data Center Edition");
    EXPECT_EQ(tree("5a0009,590002"),
              head +
                  folder("Microsoft Windows 2003 x64 Edition",
                         folder("Microsoft Windows 2003 (x64)", x64)) +
                  "," + folder("Microsoft Windows 2008 x32 Edition", x32) + "]}");
    EXPECT_EQ(tree("580016"), head +
                                  folder("Microsoft Windows 2003 x32 Edition",
                                         folder("Microsoft Windows 2003 R2", r2)) +
                                  "]}");
}

TEST(OSTree, KeepsTheSelectedIdentifierWithoutMarkingIt)
{
    Collection::OSTree tree("580002", "580002");
    EXPECT_EQ(tree.selected(), "580002");
    EXPECT_EQ(std::string(tree.toString().c_str()).find("selected:true"), std::string::npos);
}
