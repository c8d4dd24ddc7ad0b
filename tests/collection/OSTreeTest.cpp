#include "collection/OSTree.h"

#include "ExpectedFiles.h"

#include <gtest/gtest.h>

#include <regex>
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
    std::regex osid("osid:'([0-9a-f]{6})'");
    std::vector<std::string> ids;
    for (std::sregex_iterator it(all.begin(), all.end(), osid), end; it != end; ++it)
        ids.push_back((*it)[1]);
    ASSERT_EQ(ids.size(), 60u);

    // Reversed, with duplicates, unknown identifiers and empty fields.
    std::string list = "999999,,";
    for (auto it = ids.rbegin(); it != ids.rend(); ++it)
        list += *it + "," + *it + ",";
    EXPECT_EQ(tree(list.c_str()), all);
}

TEST(OSTree, EveryFolderCombination)
{
    struct Leaf
    {
        char const* osid;
        std::string entry;
    };
    Leaf const leaves[] = {
        {"580002", standard2003},
        {"580016", entry("580016", "Microsoft Windows Server 2003 R2, Datacenter Edition")},
        {"590002", entry("590002", "Microsoft Windows Server 2003, Enterprise x64 Edition")},
        {"590010", entry("590010", "Microsoft Windows Server 2003 R2, Datacenter x64 Edition")},
        {"5a0009", entry("5a0009", "Microsoft Windows Server 2008, Data Center Edition")},
        {"5b0010", entry("5b0010", "Microsoft Windows Server 2008 x64, Data Center Edition "
                                   "(ZR-Branded)")},
    };
    char const* const leafNames[] = {
        "Microsoft Windows 2003",
        "Microsoft Windows 2003 R2",
        "Microsoft Windows 2003 (x64)",
        "Microsoft Windows 2003 R2 (x64)",
        "Microsoft Windows 2008 x32 Edition",
        "Microsoft Windows 2008 x64 Edition",
    };
    auto joined = [](std::vector<std::string> const& parts)
    {
        std::string text;
        for (auto const& part : parts)
            text += (text.empty() ? "" : ",") + part;
        return text;
    };

    for (unsigned mask = 0; mask < 64; ++mask)
    {
        std::string list;
        std::vector<std::string> leafFolders(6);
        for (int i = 5; i >= 0; --i)
            if (mask & (1u << i))
            {
                list += std::string(leaves[i].osid) + ",";
                leafFolders[i] = folder(leafNames[i], leaves[i].entry);
            }
        std::vector<std::string> top;
        for (int group = 0; group < 2; ++group)
        {
            std::vector<std::string> subfolders;
            for (int i = 2 * group; i < 2 * group + 2; ++i)
                if (!leafFolders[i].empty())
                    subfolders.push_back(leafFolders[i]);
            if (!subfolders.empty())
                top.push_back(folder(group == 0 ? "Microsoft Windows 2003 x32 Edition"
                                                : "Microsoft Windows 2003 x64 Edition",
                                     joined(subfolders)));
        }
        for (int i = 4; i < 6; ++i)
            if (!leafFolders[i].empty())
                top.push_back(leafFolders[i]);
        EXPECT_EQ(tree(list.c_str()), head + joined(top) + "]}") << "folders " << mask;
    }
}

TEST(OSTree, KeepsTheSelectedIdentifierWithoutMarkingIt)
{
    Collection::OSTree tree("580002", "580002");
    EXPECT_EQ(tree.selected(), "580002");
    EXPECT_EQ(std::string(tree.toString().c_str()).find("selected:true"), std::string::npos);
}
