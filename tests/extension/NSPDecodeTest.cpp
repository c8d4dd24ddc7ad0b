#include "common/Conversion.h"
#include "extension/NSP.h"

#include <gtest/gtest.h>

#include <string>

namespace
{
std::string decode(const std::string& text)
{
    Common::string decoded = NSP::decode(Common::string(text.data(), text.size()));
    return std::string(decoded.c_str(), decoded.size());
}

// The plain loop, as the reference for the one-pass version.
std::string referenceDecode(const std::string& text)
{
    auto value = [](unsigned char c) -> int
    {
        if (c >= 'a' && c <= 'z')
            return c - 'a' + 10;
        if (c >= 'A' && c <= 'Z')
            return c - 'A' + 10;
        return static_cast<int>(c) - '0';
    };
    std::string result = text;
    size_t pos = 0;
    for (;;)
    {
        pos = result.find('%', pos);
        if (pos == std::string::npos)
            break;
        std::string pair = result.substr(pos + 1, 2);
        unsigned char first = pair.size() > 0 ? pair[0] : 0;
        unsigned char second = pair.size() > 1 ? pair[1] : 0;
        char c = static_cast<char>(static_cast<unsigned>(value(first) * 16 + value(second)) & 0xFF);
        result.replace(pos, 3, 1, c);
        pos += 1;
    }
    for (char& c : result)
        if (c == '+')
            c = ' ';
    return result;
}
} // namespace

TEST(NSPDecode, EscapesAndPlus)
{
    EXPECT_EQ(decode("a%20b"), "a b");
    EXPECT_EQ(decode("a+b"), "a b");
    EXPECT_EQ(decode("a%2Bb"), "a b"); // the escaped plus also becomes a blank
    EXPECT_EQ(decode("a%2bb"), "a b");
    EXPECT_EQ(decode("%25"), "%");
    EXPECT_EQ(decode("%2541"), "%41"); // a decoded "%" is not decoded again
    EXPECT_EQ(decode("%41%42%43"), "ABC");
    EXPECT_EQ(decode("plain"), "plain");
    EXPECT_EQ(decode(""), "");
}

TEST(NSPDecode, MatchesThePlainLoop)
{
    const char alphabet[] = {'%', '%', '2', '5', 'B', 'b', '+', 'a', 'G', '0', '\0', 'f', '9'};
    unsigned seed = 12345;
    for (int round = 0; round < 3000; ++round)
    {
        std::string text;
        unsigned length = (seed >> 8) % 12;
        for (unsigned i = 0; i < length; ++i)
        {
            seed = seed * 1103515245u + 12345u;
            text.push_back(alphabet[(seed >> 16) % sizeof alphabet]);
        }
        seed = seed * 1103515245u + 12345u;
        ASSERT_EQ(decode(text), referenceDecode(text)) << "text: " << text;
    }
}

TEST(NSPDecode, LongTextIsLinear)
{
    std::string text;
    for (int i = 0; i < 200000; ++i)
        text += "%41";
    EXPECT_EQ(decode(text), std::string(200000, 'A'));
}

// The pair rule is that of Conversion::hexStringToInt, for every
// pair of bytes and for the short forms at the end of a text.
TEST(NSPDecode, PairsFollowHexStringToInt)
{
    for (unsigned first = 0; first < 256; ++first)
        for (unsigned second = 0; second < 256; ++second)
        {
            char pair[2] = {static_cast<char>(first), static_cast<char>(second)};
            std::string escaped = std::string("%") + pair[0] + pair[1];
            unsigned char expected = Conversion::hexStringToInt(Common::string(pair, 2));
            std::string decoded = decode(escaped);
            ASSERT_EQ(decoded.size(), 1u);
            char want = static_cast<char>(expected) == '+' ? ' ' : static_cast<char>(expected);
            ASSERT_EQ(decoded[0], want) << first << " " << second;
        }
    for (unsigned first = 0; first < 256; ++first)
    {
        char one = static_cast<char>(first);
        unsigned char expected = Conversion::hexStringToInt(Common::string(&one, 1));
        char want = static_cast<char>(expected) == '+' ? ' ' : static_cast<char>(expected);
        ASSERT_EQ(decode(std::string("%") + one), std::string(1, want)) << first;
    }
    char last = static_cast<char>(Conversion::hexStringToInt(Common::string()));
    EXPECT_EQ(decode("%"), std::string(1, last == '+' ? ' ' : last));
}
