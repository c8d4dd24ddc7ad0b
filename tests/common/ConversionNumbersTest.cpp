// Numbers, decimal and hexadecimal text.
#include "common/Conversion.h"
#include "common/Hex.h"

#include "ConversionTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

using conversion_test::bytes;

namespace
{

TEST(ClampPercentage, EveryByteRoundsToAMultipleOfFiveBelow255)
{
    for (int p = 0; p <= 255; ++p)
    {
        int r = p % 5;
        int expected = r == 0 ? p : r == 1 ? p - 1 : r == 2 ? p - 2 : r == 3 ? p + 2 : p + 1;
        EXPECT_EQ(Conversion::clampPercentage(static_cast<unsigned char>(p)), expected)
            << "p = " << p;
    }
    EXPECT_EQ(Conversion::clampPercentage(254), 255); // the top is not clamped further
}

TEST(LeastCommonMultiple, MatchesTheSteppingLoopZeroCountsAsOneAndWrapsBeyond32Bits)
{
    for (unsigned a = 1; a <= 60; ++a)
        for (unsigned b = 1; b <= 60; ++b)
        {
            unsigned x = a, y = b;
            while (x != y)
                x < y ? x += a : y += b;
            ASSERT_EQ(Conversion::leastCommonMultiple(a, b), x) << a << ", " << b;
        }
    EXPECT_EQ(Conversion::leastCommonMultiple(0, 5), 5u);
    EXPECT_EQ(Conversion::leastCommonMultiple(5, 0), 5u);
    EXPECT_EQ(Conversion::leastCommonMultiple(0, 0), 1u);
    EXPECT_EQ(Conversion::leastCommonMultiple(65535, 65537), 4294967295u);
    EXPECT_EQ(Conversion::leastCommonMultiple(65536, 65537), 65536u); // 2^32 + 65536
}

TEST(TimeToString, AlwaysThePlaceholder)
{
    unsigned char record[3] = {12, 34, 56};
    EXPECT_EQ(bytes(Conversion::timeToString(record)), "0:0:0");
    EXPECT_EQ(bytes(Conversion::timeToString(nullptr)), "0:0:0");
}

TEST(Xtoi, StatusAndValueForEveryKindOfInput)
{
    struct
    {
        Common::string text;
        int status;
        unsigned value; // 77: left alone
    } const cases[] = {
        {"", Conversion::XTOI_EMPTY, 77},
        {"123456789", Conversion::XTOI_TOO_LONG, 77},
        {"ff", Conversion::XTOI_OK, 0xFF},
        {"aBcD", Conversion::XTOI_OK, 0xABCD},
        {"FFFFFFFF", Conversion::XTOI_OK, 0xFFFFFFFF},
        {"00000001", Conversion::XTOI_OK, 1},
        // A bad character leaves the sum of the digits after it (read last to first).
        {"1G", Conversion::XTOI_NOT_HEX, 0},
        {"G1", Conversion::XTOI_NOT_HEX, 1},
        {"0x10", Conversion::XTOI_NOT_HEX, 0x10},
        {"-1", Conversion::XTOI_NOT_HEX, 1},
        {"\xC3\xA9", Conversion::XTOI_NOT_HEX, 0},
        // The length ends at the first NUL.
        {Common::string("1\0zz", 4), Conversion::XTOI_OK, 1},
        {Common::string("\0"
                        "12",
                        3),
         Conversion::XTOI_EMPTY, 77},
        {Common::string("12345678\0"
                        "9",
                        10),
         Conversion::XTOI_OK, 0x12345678},
    };
    for (auto const& c : cases)
    {
        unsigned value = 77;
        EXPECT_EQ(Conversion::xtoi(c.text, value), c.status) << bytes(c.text);
        EXPECT_EQ(value, c.value) << bytes(c.text);
    }
}

TEST(HexStringToInt, ReadsTwoCharactersUnvalidatedAndAShortTextReadsItsNul)
{
    EXPECT_EQ(Conversion::hexStringToInt("a0"), 160);
    EXPECT_EQ(Conversion::hexStringToInt("7E"), 126);
    EXPECT_EQ(Conversion::hexStringToInt("41zz"), 0x41);
    // A letter counts its upper-case distance from 'A' plus 10.
    EXPECT_EQ(Conversion::hexStringToInt("G0"), 0); // 16*16 = 256
    EXPECT_EQ(Conversion::hexStringToInt("zz"), (35 * 16 + 35) & 0xFF);
    // '4', then NUL counted as 0 - '0': 4*16 - 48 = 16.
    EXPECT_EQ(Conversion::hexStringToInt("4"), 16);
    EXPECT_EQ(Conversion::hexStringToInt(""), (-48 * 16 - 48) & 0xFF);
}

TEST(StringToArray, SpellsTheBytesAndEveryByteRoundTripsThroughItsHexPair)
{
    EXPECT_EQ(bytes(Conversion::stringToArray("48656c6C6F")), "Hello");
    EXPECT_EQ(bytes(Conversion::stringToArray("")), "");
    EXPECT_EQ(bytes(Conversion::stringToArray("00FF")), std::string("\0\xFF", 2));
    // Odd length: the last pair ends at the NUL.
    EXPECT_EQ(bytes(Conversion::stringToArray("ABC")), std::string("\xAB\x90", 2));
    EXPECT_EQ(Conversion::stringToArray("1").size(), 1u);
    for (int v = 0; v < 256; ++v)
    {
        Common::string pair = IN_HEX_2(static_cast<unsigned char>(v));
        EXPECT_EQ(Conversion::hexStringToInt(pair), v);
        EXPECT_EQ(bytes(Conversion::stringToArray(pair)), std::string(1, char(v)));
    }
}

TEST(StringToIndex, FindsTheFirstEqualEntryOrGivesTheCount)
{
    static char const* const table[] = {"Floppy", "CDROM", "HDD", "CDROM"};
    auto index = [&](char const* name) { return Conversion::stringToIndex(table, table + 4, name); };
    EXPECT_EQ(index("Floppy"), 0u);
    EXPECT_EQ(index("CDROM"), 1u);
    EXPECT_EQ(index("HDD"), 2u);
    EXPECT_EQ(index("hdd"), 4u); // case matters
    EXPECT_EQ(index("HD"), 4u);
    EXPECT_EQ(index(""), 4u);
    EXPECT_EQ(Conversion::stringToIndex(table, table, "HDD"), 0u);
}

TEST(ToString, DecimalOfEveryWidthAndSign)
{
    EXPECT_EQ(bytes(Conversion::toString(static_cast<unsigned char>(255))), "255");
    EXPECT_EQ(bytes(Conversion::toString(4294967295u)), "4294967295");
    EXPECT_EQ(bytes(Conversion::toString(18446744073709551615ull)), "18446744073709551615");
    EXPECT_EQ(bytes(Conversion::toString(0)), "0");
    EXPECT_EQ(bytes(Conversion::toString(INT_MIN)), "-2147483648");
    EXPECT_EQ(bytes(Conversion::toString(static_cast<short>(-32768))), "-32768");
    EXPECT_EQ(bytes(Conversion::toString(LLONG_MIN)), "-9223372036854775808");
    EXPECT_EQ(bytes(Conversion::toString('A')), "65"); // char promotes to int
}

TEST(ToNumber, DecimalAfterBlanksWithoutSignIgnoringTrailingText)
{
    struct
    {
        Common::string text;
        unsigned value;
    } const cases[] = {
        {"42", 42},     {"007", 7},     {"4294967295", 4294967295u},
        {"   42", 42},  {"\t \t7", 7},  {"\n5", 0}, {"\r5", 0}, // blanks: spaces and tabs only
        {"abc", 0},     {"x12", 0},     {"-5", 0},  {"+5", 0},
        {"12abc", 12},  {"12 34", 12},  {"3.9", 3},
        {Common::string("1\0"
                        "2",
                        3),
         1},
    };
    for (auto const& c : cases)
        EXPECT_EQ(Conversion::toNumber<unsigned int>(c.text), c.value) << bytes(c.text);

    // The reference form reports whether there were digits.
    unsigned value = 99;
    EXPECT_FALSE(Conversion::toNumber<unsigned int>("   ", value));
    EXPECT_EQ(value, 0u);
    unsigned long long large = 0;
    EXPECT_TRUE(Conversion::toNumber(Common::string(" 1099511627776 kB"), large));
    EXPECT_EQ(large, 1099511627776ull);
}

TEST(ToNumber, OverflowWrapsModuloTheTargetRange)
{
    EXPECT_EQ(Conversion::toNumber<unsigned char>("256"), 0);
    EXPECT_EQ(Conversion::toNumber<unsigned char>("300"), 44);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("4294967297"), 1u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("10000000000"), 1410065408u); // 10^10 mod 2^32
    EXPECT_EQ(Conversion::toNumber<unsigned long long>("18446744073709551615"),
              18446744073709551615ull);
    EXPECT_EQ(Conversion::toNumber<unsigned long long>("18446744073709551617"), 1ull);
}

TEST(InHex, FixedWidthUpperCase)
{
    EXPECT_EQ(bytes(IN_HEX_2(0)), "00");
    EXPECT_EQ(bytes(IN_HEX_2(0xFF)), "FF");
    EXPECT_EQ(bytes(IN_HEX_4(1)), "0001");
    EXPECT_EQ(bytes(IN_HEX_8(0x1234ABCDu)), "1234ABCD");
    EXPECT_EQ(bytes(IN_HEX_8(0xFFFFFFFFu)), "FFFFFFFF");
}

} // namespace
