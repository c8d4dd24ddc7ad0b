#include "extension/NSPRequest.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{
std::vector<std::string> values(const Common::list<Common::istring>& list)
{
    std::vector<std::string> out;
    for (Common::list<Common::istring>::const_iterator it = list.begin(); it != list.end(); ++it)
        out.push_back(it->c_str());
    return out;
}
} // namespace

TEST(NSPRequest, DecodedParametersByNameIgnoringCase)
{
    NSPRequest request("GET", "a=1&A=2&v=a%2Bb&w=a+b&p=%25&k=a=b&n%61me=x&flag&&=5");
    EXPECT_STREQ(request("a").c_str(), "1");
    EXPECT_EQ(values(request.list("A")), (std::vector<std::string>{"1", "2"}));
    const std::pair<const char*, const char*> cases[] = {
        {"v", "a b"},  {"w", "a b"}, {"p", "%"},      {"k", "a=b"},
        {"NAME", "x"}, {"flag", ""}, {"missing", ""}, {"", ""}, // an empty name is never looked up
    };
    for (auto const& c : cases)
        EXPECT_STREQ(request(c.first).c_str(), c.second) << c.first;
    EXPECT_TRUE(request.list("missing").empty());
    EXPECT_TRUE(request.list("").empty());
    EXPECT_EQ(request.parameters().size(), 10u); // empty pieces are kept
}

TEST(NSPRequest, PostCarriesNoParametersAndCopiesKeepTheirOwn)
{
    NSPRequest post("post", "a=1");
    EXPECT_TRUE(post.parameters().empty());
    EXPECT_STREQ(post("a").c_str(), "");
    EXPECT_STREQ(post.method().c_str(), "post");

    NSPRequest a("GET", "a=1");
    NSPRequest b("GET", "b=2&b=3");
    a = b;
    NSPRequest c(a);
    a = post;
    a = a;
    EXPECT_EQ(values(c.list("b")), (std::vector<std::string>{"2", "3"}));
    EXPECT_STREQ(c("a").c_str(), "");
    EXPECT_TRUE(a.parameters().empty());
}
