#include "extension/NSPRequest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Common::istring;

namespace
{
std::string text(const istring& s)
{
    return std::string(s.c_str(), s.size());
}

std::vector<std::string> values(const Common::list<istring>& list)
{
    std::vector<std::string> out;
    for (Common::list<istring>::const_iterator it = list.begin(); it != list.end(); ++it)
        out.push_back(text(*it));
    return out;
}
} // namespace

TEST(NSPRequest, FirstValueAndRepeatedValues)
{
    NSPRequest request("GET", "a=1&A=2");
    EXPECT_EQ(text(request("a")), "1");
    EXPECT_EQ(values(request.list("A")), (std::vector<std::string>{"1", "2"}));
    EXPECT_EQ(text(request.queryString()), "&a=1&A=2");
}

TEST(NSPRequest, ItemsWithoutValues)
{
    NSPRequest x("GET", "x");
    EXPECT_EQ(text(x("x")), "");
    EXPECT_EQ(x.parameters().size(), 1u);
    EXPECT_EQ(text(x.parameters().begin()->name), "x");

    NSPRequest empty("GET", "x=");
    EXPECT_EQ(text(empty.parameters().begin()->name), "x");
    EXPECT_EQ(text(empty.parameters().begin()->value), "");

    NSPRequest noName("GET", "=5");
    EXPECT_EQ(text(noName.parameters().begin()->name), "");
    EXPECT_EQ(text(noName.parameters().begin()->value), "5");
    EXPECT_EQ(text(noName("")), ""); // an empty name is never looked up
    EXPECT_TRUE(noName.list("").empty());
}

TEST(NSPRequest, DecodesNamesAndValues)
{
    NSPRequest request("GET", "v=a%2Bb&w=a+b&p=%25&k=a=b&n%61me=x");
    EXPECT_EQ(text(request("v")), "a b");
    EXPECT_EQ(text(request("w")), "a b");
    EXPECT_EQ(text(request("p")), "%");
    EXPECT_EQ(text(request("k")), "a=b");
    EXPECT_EQ(text(request("NAME")), "x");
    EXPECT_EQ(text(request("missing")), "");
    EXPECT_TRUE(request.list("missing").empty());
}

TEST(NSPRequest, PostCarriesNoParameters)
{
    NSPRequest request("post", "a=1");
    EXPECT_TRUE(request.parameters().empty());
    EXPECT_EQ(text(request("a")), "");
    EXPECT_EQ(text(request.queryString()), "");
    EXPECT_EQ(text(request.method()), "post");
}

TEST(NSPRequest, EmptyPiecesAreKept)
{
    NSPRequest request("GET", "a=1&&b=2");
    EXPECT_EQ(request.parameters().size(), 3u);
    NSPRequest none("GET", "");
    EXPECT_EQ(none.parameters().size(), 1u); // split yields one empty piece
    EXPECT_EQ(text(none.queryString()), "&");
}

TEST(NSPRequest, CopiesAndAssigns)
{
    NSPRequest a("GET", "a=1");
    NSPRequest b("GET", "b=2&b=3");
    a = b;
    EXPECT_EQ(text(a("a")), "");
    EXPECT_EQ(values(a.list("b")), (std::vector<std::string>{"2", "3"}));
    NSPRequest c(a);
    a = NSPRequest("POST", "z=1");
    EXPECT_EQ(values(c.list("b")), (std::vector<std::string>{"2", "3"}));
    EXPECT_TRUE(a.parameters().empty());
    a = a;
    EXPECT_EQ(text(a.method()), "POST");
}
