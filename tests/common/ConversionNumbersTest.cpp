// Numbers, decimal and hexadecimal text.
#include "common/Conversion.h"
#include "common/Hex.h"

#include "ConversionTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

using conversion_test::bytes;
using conversion_test::make;

namespace
{

// --- clampPercentage -------------------------------------------------------

TEST(ClampPercentage, SpecExamples)
{
    EXPECT_EQ(Conversion::clampPercentage(0), 0);
    EXPECT_EQ(Conversion::clampPercentage(3), 5);
    EXPECT_EQ(Conversion::clampPercentage(97), 95);
    EXPECT_EQ(Conversion::clampPercentage(99), 100);
    EXPECT_EQ(Conversion::clampPercentage(52), 50);
    EXPECT_EQ(Conversion::clampPercentage(53), 55);
}

TEST(ClampPercentage, TopOfTheByteIsNotClampedFurther)
{
    EXPECT_EQ(Conversion::clampPercentage(253), 255);
    EXPECT_EQ(Conversion::clampPercentage(254), 255);
    EXPECT_EQ(Conversion::clampPercentage(255), 255);
}

TEST(ClampPercentage, EveryByteFollowsTheRemainderRule)
{
    for (int p = 0; p <= 255; ++p)
    {
        int r = p % 5;
        int expected = r == 0 ? p : r == 1 ? p - 1 : r == 2 ? p - 2 : r == 3 ? p + 2 : p + 1;
        unsigned char in = static_cast<unsigned char>(p);
        EXPECT_EQ(Conversion::clampPercentage(in), expected) << "p = " << p;
    }
}

// --- leastCommonMultiple ---------------------------------------------------

// The plain stepping loop, for comparison.
unsigned lcmLoop(unsigned a, unsigned b)
{
    unsigned x = a, y = b;
    while (x != y)
    {
        if (x >= y)
            y += b;
        else
            x += a;
    }
    return x;
}

TEST(LeastCommonMultiple, SmallValues)
{
    EXPECT_EQ(Conversion::leastCommonMultiple(4, 6), 12u);
    EXPECT_EQ(Conversion::leastCommonMultiple(3, 5), 15u);
    EXPECT_EQ(Conversion::leastCommonMultiple(7, 7), 7u);
    EXPECT_EQ(Conversion::leastCommonMultiple(1, 9), 9u);
    EXPECT_EQ(Conversion::leastCommonMultiple(12, 4), 12u);
}

TEST(LeastCommonMultiple, MatchesTheSpecifiedLoop)
{
    for (unsigned a = 1; a <= 60; ++a)
        for (unsigned b = 1; b <= 60; ++b)
            ASSERT_EQ(Conversion::leastCommonMultiple(a, b), lcmLoop(a, b)) << a << ", " << b;
}

TEST(LeastCommonMultiple, ZeroCountsAsOne)
{
    EXPECT_EQ(Conversion::leastCommonMultiple(0, 5), 5u);
    EXPECT_EQ(Conversion::leastCommonMultiple(5, 0), 5u);
    EXPECT_EQ(Conversion::leastCommonMultiple(0, 0), 1u);
}

TEST(LeastCommonMultiple, LargeOperandsAreFastAndWrapBeyond32Bits)
{
    EXPECT_EQ(Conversion::leastCommonMultiple(65536, 32768), 65536u);
    EXPECT_EQ(Conversion::leastCommonMultiple(65535, 65537), 4294967295u);
    // 65536 * 65537 = 2^32 + 65536.
    EXPECT_EQ(Conversion::leastCommonMultiple(65536, 65537), 65536u);
}

// --- timeToString ----------------------------------------------------------

TEST(TimeToString, AlwaysThePlaceholder)
{
    unsigned char record[3] = {12, 34, 56};
    EXPECT_EQ(bytes(Conversion::timeToString(record)), "0:0:0");
    EXPECT_EQ(bytes(Conversion::timeToString(nullptr)), "0:0:0");
}

// --- xtoi ------------------------------------------------------------------

TEST(Xtoi, SpecExamples)
{
    unsigned value = 77;
    EXPECT_EQ(Conversion::xtoi("", value), 1);
    EXPECT_EQ(value, 77u);
    EXPECT_EQ(Conversion::xtoi("123456789", value), 2);
    EXPECT_EQ(value, 77u);
    EXPECT_EQ(Conversion::xtoi("1G", value), 4);
    EXPECT_EQ(Conversion::xtoi("ff", value), 0);
    EXPECT_EQ(value, 255u);
}

TEST(Xtoi, StatusCodesHaveNames)
{
    EXPECT_EQ(Conversion::XTOI_OK, 0);
    EXPECT_EQ(Conversion::XTOI_EMPTY, 1);
    EXPECT_EQ(Conversion::XTOI_TOO_LONG, 2);
    EXPECT_EQ(Conversion::XTOI_NOT_HEX, 4);
}

TEST(Xtoi, FullWidthAndBothCases)
{
    unsigned value = 0;
    EXPECT_EQ(Conversion::xtoi("FFFFFFFF", value), 0);
    EXPECT_EQ(value, 0xFFFFFFFFu);
    EXPECT_EQ(Conversion::xtoi("12345678", value), 0);
    EXPECT_EQ(value, 0x12345678u);
    EXPECT_EQ(Conversion::xtoi("aBcD", value), 0);
    EXPECT_EQ(value, 0xABCDu);
    EXPECT_EQ(Conversion::xtoi("0", value), 0);
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(Conversion::xtoi("00000001", value), 0);
    EXPECT_EQ(value, 1u);
}

TEST(Xtoi, BadCharacterLeavesThePartialSumOfTheDigitsAfterIt)
{
    unsigned value = 77;
    EXPECT_EQ(Conversion::xtoi("1G", value), 4);
    EXPECT_EQ(value, 0u); // 'G' is the last character, read first
    EXPECT_EQ(Conversion::xtoi("G1", value), 4);
    EXPECT_EQ(value, 1u);
    EXPECT_EQ(Conversion::xtoi("0x10", value), 4); // no prefix accepted
    EXPECT_EQ(value, 0x10u);
    EXPECT_EQ(Conversion::xtoi(" 1", value), 4);
    EXPECT_EQ(value, 1u);
    EXPECT_EQ(Conversion::xtoi("-1", value), 4);
    EXPECT_EQ(Conversion::xtoi("\xC3\xA9", value), 4);
    EXPECT_EQ(value, 0u);
}

TEST(Xtoi, LengthStopsAtTheFirstNul)
{
    unsigned value = 77;
    EXPECT_EQ(Conversion::xtoi(Common::string("1\0zz", 4), value), 0);
    EXPECT_EQ(value, 1u);
    EXPECT_EQ(Conversion::xtoi(Common::string("\0"
                                              "12",
                                              3),
                               value),
              1);
    EXPECT_EQ(Conversion::xtoi(Common::string("123456789\0", 10), value), 2);
    EXPECT_EQ(Conversion::xtoi(Common::string("12345678\0"
                                              "9",
                                              10),
                               value),
              0);
    EXPECT_EQ(value, 0x12345678u);
}

// --- hexStringToInt and stringToArray --------------------------------------

TEST(HexStringToInt, DigitsAndLettersOfEitherCase)
{
    EXPECT_EQ(Conversion::hexStringToInt("ff"), 255);
    EXPECT_EQ(Conversion::hexStringToInt("FF"), 255);
    EXPECT_EQ(Conversion::hexStringToInt("0A"), 10);
    EXPECT_EQ(Conversion::hexStringToInt("a0"), 160);
    EXPECT_EQ(Conversion::hexStringToInt("20"), 32);
    EXPECT_EQ(Conversion::hexStringToInt("7e"), 126);
}

TEST(HexStringToInt, ReadsOnlyTheFirstTwoCharacters)
{
    EXPECT_EQ(Conversion::hexStringToInt("41zz"), 0x41);
}

TEST(HexStringToInt, NothingIsValidated)
{
    // A letter counts its upper-case distance from 'A' plus 10.
    EXPECT_EQ(Conversion::hexStringToInt("G0"), 0); // 16*16 = 256
    EXPECT_EQ(Conversion::hexStringToInt("zz"), (35 * 16 + 35) & 0xFF);
    EXPECT_EQ(Conversion::hexStringToInt("1g"), 16 + 16);
}

TEST(HexStringToInt, ShortTextReadsTheTerminatingNul)
{
    // '4', then NUL counted as 0 - '0': 4*16 - 48 = 16.
    EXPECT_EQ(Conversion::hexStringToInt("4"), 16);
    EXPECT_EQ(Conversion::hexStringToInt(""), (-48 * 16 - 48) & 0xFF);
}

TEST(StringToArray, SpellsTheBytes)
{
    EXPECT_EQ(bytes(Conversion::stringToArray("48656C6C6F")), "Hello");
    EXPECT_EQ(bytes(Conversion::stringToArray("48656c6c6f")), "Hello");
    EXPECT_EQ(bytes(Conversion::stringToArray("")), "");
    EXPECT_EQ(bytes(Conversion::stringToArray("00FF")), std::string("\0\xFF", 2));
}

TEST(StringToArray, OddLengthEndsTheLastPairAtTheNul)
{
    Common::string out = Conversion::stringToArray("ABC");
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(static_cast<unsigned char>(out[0]), 0xAB);
    EXPECT_EQ(static_cast<unsigned char>(out[1]), Conversion::hexStringToInt("C"));
    EXPECT_EQ(static_cast<unsigned char>(out[1]), (12 * 16 - 48) & 0xFF);
    EXPECT_EQ(Conversion::stringToArray("1").size(), 1u);
}

TEST(StringToArray, EveryByteRoundTripsThroughItsHexPair)
{
    for (int v = 0; v < 256; ++v)
    {
        Common::string pair = IN_HEX_2(static_cast<unsigned char>(v));
        EXPECT_EQ(Conversion::hexStringToInt(pair), v);
        Common::string out = Conversion::stringToArray(pair);
        ASSERT_EQ(out.size(), 1u);
        EXPECT_EQ(static_cast<unsigned char>(out[0]), v);
    }
}

// --- stringToIndex ---------------------------------------------------------

TEST(StringToIndex, FindsTheFirstEqualEntryOrGivesTheCount)
{
    char const* table[] = {"Floppy", "CDROM", "HDD", "CDROM"};
    char const** first = table;
    char const** last = table + 4;
    EXPECT_EQ(Conversion::stringToIndex(first, last, "Floppy"), 0u);
    EXPECT_EQ(Conversion::stringToIndex(first, last, "CDROM"), 1u);
    EXPECT_EQ(Conversion::stringToIndex(first, last, "HDD"), 2u);
    EXPECT_EQ(Conversion::stringToIndex(first, last, "hdd"), 4u); // case matters
    EXPECT_EQ(Conversion::stringToIndex(first, last, "HD"), 4u);
    EXPECT_EQ(Conversion::stringToIndex(first, last, ""), 4u);
    EXPECT_EQ(Conversion::stringToIndex(first, first, "HDD"), 0u);
}

TEST(StringToIndex, AcceptsAConstTable)
{
    static char const* const table[] = {"a", "b"};
    EXPECT_EQ(Conversion::stringToIndex(table, table + 2, "b"), 1u);
}

// --- toString --------------------------------------------------------------

TEST(ToString, UnsignedDecimal)
{
    EXPECT_EQ(bytes(Conversion::toString(static_cast<unsigned char>(0))), "0");
    EXPECT_EQ(bytes(Conversion::toString(static_cast<unsigned char>(255))), "255");
    EXPECT_EQ(bytes(Conversion::toString(static_cast<unsigned short>(65535))), "65535");
    EXPECT_EQ(bytes(Conversion::toString(4294967295u)), "4294967295");
    EXPECT_EQ(bytes(Conversion::toString(4294967295ul)), "4294967295");
    EXPECT_EQ(bytes(Conversion::toString(18446744073709551615ull)), "18446744073709551615");
    EXPECT_EQ(bytes(Conversion::toString(0ull)), "0");
}

TEST(ToString, SignedDecimal)
{
    EXPECT_EQ(bytes(Conversion::toString(0)), "0");
    EXPECT_EQ(bytes(Conversion::toString(-1)), "-1");
    EXPECT_EQ(bytes(Conversion::toString(INT_MIN)), "-2147483648");
    EXPECT_EQ(bytes(Conversion::toString(INT_MAX)), "2147483647");
    EXPECT_EQ(bytes(Conversion::toString(LONG_MIN)), "-2147483648");
    EXPECT_EQ(bytes(Conversion::toString(static_cast<short>(-32768))), "-32768");
    EXPECT_EQ(bytes(Conversion::toString(LLONG_MIN)), "-9223372036854775808");
}

TEST(ToString, SizeTypeAndCharactersPickAnOverload)
{
    unsigned count = 3;
    EXPECT_EQ(bytes(Conversion::toString(count)), "3");
    EXPECT_EQ(bytes(Conversion::toString(sizeof(int))), "4");
    EXPECT_EQ(bytes(Conversion::toString('A')), "65"); // char promotes to int
}

// --- toNumber --------------------------------------------------------------

TEST(ToNumber, PlainDecimal)
{
    EXPECT_EQ(Conversion::toNumber<unsigned int>("42"), 42u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("0"), 0u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("007"), 7u);
    EXPECT_EQ(Conversion::toNumber<unsigned char>("255"), 255);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("4294967295"), 4294967295u);
    EXPECT_EQ(Conversion::toNumber<unsigned long long>("18446744073709551615"),
              18446744073709551615ull);
}

TEST(ToNumber, LeadingBlanksAreSpacesAndTabsOnly)
{
    EXPECT_EQ(Conversion::toNumber<unsigned int>("   42"), 42u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("\t \t7"), 7u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("\n5"), 0u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("\r5"), 0u);
}

TEST(ToNumber, TextWithoutDigitsIsZero)
{
    unsigned value = 99;
    EXPECT_FALSE(Conversion::toNumber<unsigned int>("", value));
    EXPECT_EQ(value, 0u);
    value = 99;
    EXPECT_FALSE(Conversion::toNumber<unsigned int>("   ", value));
    EXPECT_EQ(value, 0u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("abc"), 0u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("x12"), 0u);
}

TEST(ToNumber, NoSignIsAccepted)
{
    EXPECT_EQ(Conversion::toNumber<unsigned int>("-5"), 0u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("+5"), 0u);
    EXPECT_EQ(Conversion::toNumber<unsigned long long>("-1"), 0ull);
}

TEST(ToNumber, TrailingJunkIsIgnored)
{
    EXPECT_EQ(Conversion::toNumber<unsigned int>("12abc"), 12u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("12 34"), 12u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("3.9"), 3u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>(Common::string("1\0"
                                                                "2",
                                                                3)),
              1u);
}

TEST(ToNumber, OverflowWrapsModuloTheTargetRange)
{
    EXPECT_EQ(Conversion::toNumber<unsigned char>("256"), 0);
    EXPECT_EQ(Conversion::toNumber<unsigned char>("300"), 44);
    EXPECT_EQ(Conversion::toNumber<unsigned char>("1000"), 1000 % 256);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("4294967296"), 0u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("4294967297"), 1u);
    EXPECT_EQ(Conversion::toNumber<unsigned int>("10000000000"), 1410065408u); // 10^10 mod 2^32
    EXPECT_EQ(Conversion::toNumber<unsigned long long>("18446744073709551616"), 0ull);
    EXPECT_EQ(Conversion::toNumber<unsigned long long>("18446744073709551617"), 1ull);
}

TEST(ToNumber, ReferenceFormFillsAndReportsDigits)
{
    unsigned char small = 0;
    EXPECT_TRUE(Conversion::toNumber(Common::string("17"), small));
    EXPECT_EQ(small, 17);
    unsigned int middle = 0;
    EXPECT_TRUE(Conversion::toNumber(Common::string(" 65536 kB"), middle));
    EXPECT_EQ(middle, 65536u);
    unsigned long long large = 0;
    EXPECT_TRUE(Conversion::toNumber(Common::string("1099511627776"), large));
    EXPECT_EQ(large, 1099511627776ull);
}

TEST(ToNumber, RoundTripsToString)
{
    for (unsigned v : {0u, 1u, 9u, 10u, 99u, 12345u, 65535u, 4294967295u})
        EXPECT_EQ(Conversion::toNumber<unsigned int>(Conversion::toString(v)), v);
    for (unsigned long long v : {0ull, 4294967296ull, 18446744073709551615ull})
        EXPECT_EQ(Conversion::toNumber<unsigned long long>(Conversion::toString(v)), v);
    for (int v = 0; v < 256; ++v)
    {
        unsigned char c = static_cast<unsigned char>(v);
        EXPECT_EQ(Conversion::toNumber<unsigned char>(Conversion::toString(c)), c);
    }
}

// --- IN_HEX ----------------------------------------------------------------

TEST(InHex, FixedWidthUpperCase)
{
    EXPECT_EQ(bytes(IN_HEX_2(0x0A)), "0A");
    EXPECT_EQ(bytes(IN_HEX_2(0)), "00");
    EXPECT_EQ(bytes(IN_HEX_2(255)), "FF");
    EXPECT_EQ(bytes(IN_HEX_4(1)), "0001");
    EXPECT_EQ(bytes(IN_HEX_4(0xBEEF)), "BEEF");
    EXPECT_EQ(bytes(IN_HEX_8(0)), "00000000");
    EXPECT_EQ(bytes(IN_HEX_8(0x1234ABCDu)), "1234ABCD");
    EXPECT_EQ(bytes(IN_HEX_8(0xFFFFFFFFu)), "FFFFFFFF");
}

TEST(InHex, BoardKeyShape)
{
    // The names database key: "%04X%04X%08X" of vendor, device and subsystem.
    Common::string key = IN_HEX_4(0x8086) + IN_HEX_4(0x2922) + IN_HEX_8(0x103C3209u);
    EXPECT_EQ(bytes(key), "80862922103C3209");
}

} // namespace
