// Base64 and UTF-8 cleaning.
#include "common/Conversion.h"

#include "ConversionTestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

using conversion_test::bytes;
using conversion_test::make;

namespace
{

std::string const kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Bit-by-bit reference encoder, independent of the one under test.
std::string referenceEncode(std::string const& in)
{
    std::string out;
    unsigned bits = 0, count = 0;
    for (unsigned char c : in)
    {
        bits = (bits << 8 | c) & 0xFFFF;
        count += 8;
        while (count >= 6)
        {
            count -= 6;
            out += kAlphabet[(bits >> count) & 0x3F];
        }
    }
    if (count > 0)
        out += kAlphabet[(bits << (6 - count)) & 0x3F];
    while (out.size() % 4 != 0)
        out += '=';
    return out;
}

std::string randomBytes(std::mt19937& rng, unsigned length)
{
    std::uniform_int_distribution<int> byte(0, 255);
    std::string s;
    for (unsigned i = 0; i < length; ++i)
        s += static_cast<char>(byte(rng));
    return s;
}

TEST(IsBase64, ExactlyTheAlphabet)
{
    EXPECT_EQ(bytes(BASE64_CHARACTERS), kAlphabet);
    for (int c = -128; c <= 256 + 'A'; ++c)
    {
        bool expected = c > 0 && c < 256 && kAlphabet.find(static_cast<char>(c)) != std::string::npos;
        EXPECT_EQ(Common::isBase64(c), expected) << "c = " << c;
    }
}

TEST(Base64Encode, Rfc4648VectorsBinaryBytesAndNoLineBreaks)
{
    for (auto const& c : std::vector<std::pair<std::string, char const*>>{
             {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="},
             {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}, {std::string("\0", 1), "AA=="},
             {"\xFF\xFF\xFF", "////"}, {"\xFB\xFF", "+/8="}})
        EXPECT_EQ(bytes(Conversion::base64Encode(make(c.first))), c.second);
    std::string encoded = bytes(Conversion::base64Encode(make(std::string(300, 'x'))));
    EXPECT_EQ(encoded.size(), 400u);
    EXPECT_EQ(encoded.find('\n'), std::string::npos);
}

TEST(Base64Decode, PartialGroupsPaddingAndForeignCharactersEndTheText)
{
    for (auto const& c : std::vector<std::pair<std::string, char const*>>{
             {"TWFu", "Man"}, {"TQ==", "M"}, {"", ""},
             // A partial final group: one leftover character is ignored.
             {"TQ", "M"}, {"T", ""}, {"TWF", "Ma"}, {"TWFuT", "Man"}, {"Zm9vYmE", "fooba"},
             // Decoding stops at the first padding...
             {"TWFu=TWFu", "Man"}, {"=TWFu", ""}, {"TQ=x", "M"}, {"TQ==TWFu", "M"},
             // ... and at the first character outside the alphabet.
             {"TW Fu", "M"}, {"TWFu\nTWFu", "Man"}, {"-_-_", ""}, {"TWFu\xC3\xA9TWFu", "Man"},
             {std::string("TW\0Fu", 5), "M"},
             // Leftover bits of a partial group are dropped.
             {"TR==", "M"}, {"TWF=", "Ma"}})
        EXPECT_EQ(bytes(Conversion::base64Decode(make(c.first))), c.second) << c.first;
}

TEST(Base64RoundTrip, RandomBytesOfEveryLengthUpTo64PaddedOrNot)
{
    std::mt19937 rng(20261121u);
    for (unsigned length = 0; length <= 64; ++length)
    {
        for (int trial = 0; trial < 20; ++trial)
        {
            std::string raw = trial == 0 ? std::string(length, '\0') : randomBytes(rng, length);
            Common::string encoded = Conversion::base64Encode(make(raw));
            ASSERT_EQ(bytes(encoded), referenceEncode(raw)) << "length " << length;
            ASSERT_EQ(bytes(Conversion::base64Decode(encoded)), raw) << "length " << length;
            std::string unpadded = bytes(encoded).substr(0, bytes(encoded).find('='));
            ASSERT_EQ(bytes(Conversion::base64Decode(make(unpadded))), raw) << "length " << length;
        }
    }
}

std::string clean(std::string const& s)
{
    return bytes(Conversion::toValidUTF8(make(s)));
}

TEST(ToValidUtf8, WellShapedSequencesOfEveryLengthAreKept)
{
    for (std::string s : {"", "plain text\t\r\n", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
                          "\xF8\x88\x80\x80\x80", "\xFC\x84\x80\x80\x80\x80",
                          "a\xC3\xA9z\xE2\x82\xAC!",
                          // Only the shape is checked: overlong forms and surrogates stay.
                          "\xC0\x80", "\xED\xA0\x80"})
        EXPECT_EQ(clean(s), s);
    EXPECT_EQ(clean(std::string("a\0b\x7F", 4)), std::string("a\0b\x7F", 4));
}

TEST(ToValidUtf8, StrayTruncatedAndInterruptedBytesAreDropped)
{
    for (auto const& c : std::vector<std::pair<std::string, std::string>>{
             {"\x41\xC3\xA9\xFF\x42", "\x41\xC3\xA9\x42"},
             {"a\xFF\xFE"
              "b",
              "ab"},
             {"\xFE\x80\x80\x80\x80\x80\x80", ""},
             // Stray continuation bytes.
             {"\x80", ""}, {"\xC3\xA9\xA9", "\xC3\xA9"}, {"\x80\x81\x82\xC3\xA9", "\xC3\xA9"},
             // Sequences cut off at the end.
             {"A\xC3", "A"}, {"A\xE2\x82", "A"}, {"A\xF0\x9F\x98", "A"},
             {"A\xF8\x88\x80\x80", "A"}, {"A\xFC\x84\x80\x80\x80", "A"}, {"\xE2", ""},
             // A lead byte followed by a non-continuation.
             {"\xC3"
              "A",
              "A"},
             {"\xF0\x9F"
              "A\x80",
              "A"},
             {"\xC3\xC3\xA9", "\xC3\xA9"}, {std::string("\xC3\0", 2), std::string("\0", 1)}})
        EXPECT_EQ(clean(c.first), c.second);
}

TEST(ToValidUtf8, RandomBytesGiveACleanIdempotentSubsequence)
{
    std::mt19937 rng(42u);
    for (int trial = 0; trial < 500; ++trial)
    {
        std::string raw = randomBytes(rng, trial % 40);
        std::string once = clean(raw);
        EXPECT_EQ(clean(once), once);
        // A subsequence of the input.
        unsigned j = 0;
        for (unsigned i = 0; i < raw.size() && j < once.size(); ++i)
            if (raw[i] == once[j])
                ++j;
        EXPECT_EQ(j, once.size());
    }
}

} // namespace
