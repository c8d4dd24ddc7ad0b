// Base64 and UTF-8 cleaning.
#include "common/Conversion.h"

#include "ConversionTestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

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

// --- Alphabet --------------------------------------------------------------

TEST(Base64Alphabet, IsTheStandardOne)
{
    EXPECT_EQ(bytes(BASE64_CHARACTERS), kAlphabet);
    EXPECT_EQ(BASE64_CHARACTERS.size(), 64u);
}

TEST(IsBase64, ExactlyTheAlphabet)
{
    for (int c = -128; c <= 255; ++c)
    {
        bool expected = c > 0 && kAlphabet.find(static_cast<char>(c)) != std::string::npos;
        EXPECT_EQ(Common::isBase64(c), expected) << "c = " << c;
    }
    EXPECT_FALSE(Common::isBase64('='));
    EXPECT_FALSE(Common::isBase64('-'));
    EXPECT_FALSE(Common::isBase64('_'));
    EXPECT_FALSE(Common::isBase64(-1));
    EXPECT_FALSE(Common::isBase64(0));
    EXPECT_FALSE(Common::isBase64('A' + 256));
}

// --- Encode ----------------------------------------------------------------

TEST(Base64Encode, SpecExamples)
{
    EXPECT_EQ(bytes(Conversion::base64Encode("M")), "TQ==");
    EXPECT_EQ(bytes(Conversion::base64Encode("Ma")), "TWE=");
    EXPECT_EQ(bytes(Conversion::base64Encode("Man")), "TWFu");
}

TEST(Base64Encode, Rfc4648Vectors)
{
    EXPECT_EQ(bytes(Conversion::base64Encode("")), "");
    EXPECT_EQ(bytes(Conversion::base64Encode("f")), "Zg==");
    EXPECT_EQ(bytes(Conversion::base64Encode("fo")), "Zm8=");
    EXPECT_EQ(bytes(Conversion::base64Encode("foo")), "Zm9v");
    EXPECT_EQ(bytes(Conversion::base64Encode("foob")), "Zm9vYg==");
    EXPECT_EQ(bytes(Conversion::base64Encode("fooba")), "Zm9vYmE=");
    EXPECT_EQ(bytes(Conversion::base64Encode("foobar")), "Zm9vYmFy");
}

TEST(Base64Encode, BinaryBytesAndNoLineBreaks)
{
    EXPECT_EQ(bytes(Conversion::base64Encode(make(std::string("\0", 1)))), "AA==");
    EXPECT_EQ(bytes(Conversion::base64Encode(make(std::string("\0\0\0", 3)))), "AAAA");
    EXPECT_EQ(bytes(Conversion::base64Encode(make("\xFF\xFF\xFF"))), "////");
    EXPECT_EQ(bytes(Conversion::base64Encode(make("\xFB\xFF"))), "+/8=");
    std::string longText(300, 'x');
    std::string encoded = bytes(Conversion::base64Encode(make(longText)));
    EXPECT_EQ(encoded.size(), 400u);
    EXPECT_EQ(encoded.find('\n'), std::string::npos);
}

// --- Decode ----------------------------------------------------------------

TEST(Base64Decode, SpecExamples)
{
    EXPECT_EQ(bytes(Conversion::base64Decode("TWE=")), "Ma");
    EXPECT_EQ(bytes(Conversion::base64Decode("TQ")), "M");
    EXPECT_EQ(bytes(Conversion::base64Decode("TQ==")), "M");
    EXPECT_EQ(bytes(Conversion::base64Decode("TWFu")), "Man");
}

TEST(Base64Decode, PartialFinalGroup)
{
    EXPECT_EQ(bytes(Conversion::base64Decode("")), "");
    EXPECT_EQ(bytes(Conversion::base64Decode("T")), "");        // one leftover: ignored
    EXPECT_EQ(bytes(Conversion::base64Decode("TWF")), "Ma");    // 3 characters: 2 bytes
    EXPECT_EQ(bytes(Conversion::base64Decode("TWFuT")), "Man"); // one leftover: ignored
    EXPECT_EQ(bytes(Conversion::base64Decode("TWFuTQ")), "ManM");
    EXPECT_EQ(bytes(Conversion::base64Decode("Zm9vYmE")), "fooba");
}

TEST(Base64Decode, StopsAtTheFirstPadding)
{
    EXPECT_EQ(bytes(Conversion::base64Decode("TWFu=TWFu")), "Man");
    EXPECT_EQ(bytes(Conversion::base64Decode("=TWFu")), "");
    EXPECT_EQ(bytes(Conversion::base64Decode("TQ=x")), "M");
    EXPECT_EQ(bytes(Conversion::base64Decode("TQ==TWFu")), "M");
}

TEST(Base64Decode, StopsAtTheFirstNonBase64Character)
{
    EXPECT_EQ(bytes(Conversion::base64Decode("TW Fu")), "M");
    EXPECT_EQ(bytes(Conversion::base64Decode("TWFu\nTWFu")), "Man");
    EXPECT_EQ(bytes(Conversion::base64Decode("-_-_")), "");
    EXPECT_EQ(bytes(Conversion::base64Decode("TWFu\xC3\xA9TWFu")), "Man");
    EXPECT_EQ(bytes(Conversion::base64Decode(make(std::string("TW\0Fu", 5)))), "M");
    EXPECT_EQ(bytes(Conversion::base64Decode("TWFu.")), "Man");
}

TEST(Base64Decode, LeftoverBitsOfAPartialGroupAreDropped)
{
    EXPECT_EQ(bytes(Conversion::base64Decode("TR==")), "M"); // not canonical, same byte
    EXPECT_EQ(bytes(Conversion::base64Decode("TWF=")), "Ma");
}

// --- Round trips -----------------------------------------------------------

TEST(Base64RoundTrip, AllByteValues)
{
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    Common::string encoded = Conversion::base64Encode(make(all));
    EXPECT_EQ(bytes(encoded), referenceEncode(all));
    EXPECT_EQ(bytes(Conversion::base64Decode(encoded)), all);
}

TEST(Base64RoundTrip, RandomBytesOfEveryLengthUpTo64)
{
    std::mt19937 rng(20261121u);
    for (unsigned length = 0; length <= 64; ++length)
    {
        for (int trial = 0; trial < 20; ++trial)
        {
            std::string raw = randomBytes(rng, length);
            if (trial == 0)
                raw = std::string(length, '\0'); // all NULs
            Common::string encoded = Conversion::base64Encode(make(raw));
            ASSERT_EQ(encoded.size(), (length + 2) / 3 * 4);
            ASSERT_EQ(bytes(encoded), referenceEncode(raw)) << "length " << length;
            Common::string decoded = Conversion::base64Decode(encoded);
            ASSERT_EQ(bytes(decoded), raw) << "length " << length;
        }
    }
}

TEST(Base64RoundTrip, UnpaddedTextDecodesTheSame)
{
    std::mt19937 rng(7u);
    for (unsigned length = 0; length <= 64; ++length)
    {
        std::string raw = randomBytes(rng, length);
        std::string encoded = referenceEncode(raw);
        std::string unpadded = encoded.substr(0, encoded.find('='));
        EXPECT_EQ(bytes(Conversion::base64Decode(make(unpadded))), raw) << "length " << length;
    }
}

// --- toValidUTF8 -----------------------------------------------------------

std::string clean(std::string const& s)
{
    return bytes(Conversion::toValidUTF8(make(s)));
}

TEST(ToValidUtf8, SpecExample)
{
    EXPECT_EQ(clean("\x41\xC3\xA9\xFF\x42"), "\x41\xC3\xA9\x42");
}

TEST(ToValidUtf8, AsciiAndNulAreKept)
{
    EXPECT_EQ(clean(""), "");
    EXPECT_EQ(clean("plain text\t\r\n"), "plain text\t\r\n");
    EXPECT_EQ(clean(std::string("a\0b\x7F", 4)), std::string("a\0b\x7F", 4));
}

TEST(ToValidUtf8, EveryLeadByteClassWithItsContinuationsIsKept)
{
    EXPECT_EQ(clean("\xC3\xA9"), "\xC3\xA9");                                 // 2 bytes
    EXPECT_EQ(clean("\xE2\x82\xAC"), "\xE2\x82\xAC");                         // 3 bytes
    EXPECT_EQ(clean("\xF0\x9F\x98\x80"), "\xF0\x9F\x98\x80");                 // 4 bytes
    EXPECT_EQ(clean("\xF8\x88\x80\x80\x80"), "\xF8\x88\x80\x80\x80");         // 5 bytes
    EXPECT_EQ(clean("\xFC\x84\x80\x80\x80\x80"), "\xFC\x84\x80\x80\x80\x80"); // 6 bytes
    EXPECT_EQ(clean("a\xC3\xA9z\xE2\x82\xAC!"), "a\xC3\xA9z\xE2\x82\xAC!");
}

TEST(ToValidUtf8, OnlyTheStructureIsChecked)
{
    // Overlong forms and surrogates have a valid shape and are kept.
    EXPECT_EQ(clean("\xC0\x80"), "\xC0\x80");
    EXPECT_EQ(clean("\xED\xA0\x80"), "\xED\xA0\x80");
}

TEST(ToValidUtf8, FeAndFfAreDropped)
{
    EXPECT_EQ(clean("\xFE"), "");
    EXPECT_EQ(clean("a\xFF\xFE"
                    "b"),
              "ab");
    EXPECT_EQ(clean("\xFE\x80\x80\x80\x80\x80\x80"), "");
}

TEST(ToValidUtf8, StrayContinuationBytesAreDropped)
{
    EXPECT_EQ(clean("\x80"), "");
    EXPECT_EQ(clean("a\xBF"
                    "b"),
              "ab");
    EXPECT_EQ(clean("\xC3\xA9\xA9"), "\xC3\xA9");
    EXPECT_EQ(clean("\x80\x81\x82\xC3\xA9"), "\xC3\xA9");
}

TEST(ToValidUtf8, TruncatedSequencesAtTheEndAreDropped)
{
    EXPECT_EQ(clean("A\xC3"), "A");
    EXPECT_EQ(clean("A\xE2\x82"), "A");
    EXPECT_EQ(clean("A\xF0\x9F\x98"), "A");
    EXPECT_EQ(clean("A\xF8\x88\x80\x80"), "A");
    EXPECT_EQ(clean("A\xFC\x84\x80\x80\x80"), "A");
    EXPECT_EQ(clean("\xE2"), "");
}

TEST(ToValidUtf8, LeadFollowedByANonContinuationIsDropped)
{
    EXPECT_EQ(clean("\xC3"
                    "A"),
              "A");
    EXPECT_EQ(clean("\xE2\x82"
                    "A"),
              "A");
    EXPECT_EQ(clean("\xF0\x9F"
                    "A\x80"),
              "A");
    EXPECT_EQ(clean("\xC3\xC3\xA9"), "\xC3\xA9"); // second lead starts a sequence
    EXPECT_EQ(clean(std::string("\xC3\0", 2)), std::string("\0", 1));
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
