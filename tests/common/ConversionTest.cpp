// Numbers, hexadecimal text, addresses, dates and byte order.
#include "common/Conversion.h"
#include "common/Hex.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>

namespace
{

std::string bytes(Common::string const& s)
{
    return std::string(s.c_str(), s.size());
}

TEST(Conversion, ClampPercentageRoundsToAMultipleOfFive)
{
    int const cases[][2] = {{0, 0},     {1, 0},     {2, 0},     {3, 5},     {4, 5},
                            {52, 50},   {53, 55},   {99, 100},  {250, 250}, {252, 250},
                            {253, 255}, {254, 255}, {255, 255}};
    for (auto const& c : cases)
        EXPECT_EQ(c[1], Conversion::clampPercentage(static_cast<unsigned char>(c[0]))) << c[0];
}

TEST(Conversion, LeastCommonMultipleCountsZeroAsOneAndWrapsBeyond32Bits)
{
    unsigned const cases[][3] = {{4, 6, 12},   {6, 4, 12}, {7, 5, 35}, {12, 18, 36},
                                 {60, 60, 60}, {1, 59, 59}, {0, 5, 5}, {5, 0, 5},
                                 {0, 0, 1},    {65535, 65537, 4294967295u},
                                 {65536, 65537, 65536}}; // 2^32 + 65536
    for (auto const& c : cases)
        EXPECT_EQ(c[2], Conversion::leastCommonMultiple(c[0], c[1])) << c[0] << ", " << c[1];
}

TEST(Conversion, TimeToStringIsAlwaysThePlaceholder)
{
    unsigned char record[3] = {12, 34, 56};
    EXPECT_EQ("0:0:0", bytes(Conversion::timeToString(record)));
    EXPECT_EQ("0:0:0", bytes(Conversion::timeToString(nullptr)));
}

TEST(Conversion, XtoiStatusAndValueForEveryKindOfInput)
{
    using namespace Conversion;
    struct
    {
        Common::string text;
        int status;
        unsigned value; // 77: left alone
    } const cases[] = {
        {"", XTOI_EMPTY, 77}, {"123456789", XTOI_TOO_LONG, 77}, {"aBcD", XTOI_OK, 0xABCD},
        {"FFFFFFFF", XTOI_OK, 0xFFFFFFFF}, {"00000001", XTOI_OK, 1},
        // A bad character leaves the sum of the digits after it (read last to first).
        {"1G", XTOI_NOT_HEX, 0}, {"G1", XTOI_NOT_HEX, 1}, {"0x10", XTOI_NOT_HEX, 0x10},
        {"-1", XTOI_NOT_HEX, 1}, {"\xC3\xA9", XTOI_NOT_HEX, 0},
        // The length ends at the first NUL.
        {Common::string("1\0zz", 4), XTOI_OK, 1}, {Common::string("\0" "12", 3), XTOI_EMPTY, 77},
        {Common::string("12345678\0" "9", 10), XTOI_OK, 0x12345678},
    };
    for (auto const& c : cases)
    {
        unsigned value = 77;
        EXPECT_EQ(c.status, xtoi(c.text, value)) << bytes(c.text);
        EXPECT_EQ(c.value, value) << bytes(c.text);
    }
}

TEST(Conversion, HexPairsAreReadUnvalidatedAndAShortTextReadsItsNul)
{
    struct
    {
        char const* text;
        int value;
    } const cases[] = {{"a0", 160}, {"7E", 126}, {"41zz", 0x41}, {"FF", 255},
                       {"G0", 0}, // a letter counts its distance from 'A' plus 10: 16*16
                       {"zz", (35 * 16 + 35) & 0xFF},
                       {"4", 16}, // then NUL counts as 0 - '0': 4*16 - 48
                       {"", (-48 * 16 - 48) & 0xFF}};
    for (auto const& c : cases)
        EXPECT_EQ(c.value, Conversion::hexStringToInt(c.text)) << c.text;

    EXPECT_EQ("Hello", bytes(Conversion::stringToArray("48656c6C6F")));
    EXPECT_EQ("", bytes(Conversion::stringToArray("")));
    EXPECT_EQ(std::string("\0\xFF", 2), bytes(Conversion::stringToArray("00FF")));
    EXPECT_EQ(std::string("\xAB\x90", 2), bytes(Conversion::stringToArray("ABC"))); // ends at NUL
    EXPECT_EQ("00", bytes(IN_HEX_2(0)));
    EXPECT_EQ("0001", bytes(IN_HEX_4(1)));
    EXPECT_EQ("1234ABCD", bytes(IN_HEX_8(0x1234ABCDu)));
    EXPECT_EQ("FFFFFFFF", bytes(IN_HEX_8(0xFFFFFFFFu)));
}

TEST(Conversion, StringToIndexFindsTheFirstEqualEntryOrGivesTheCount)
{
    static char const* const table[] = {"Floppy", "CDROM", "HDD", "CDROM"};
    auto index = [&](char const* name) { return Conversion::stringToIndex(table, table + 4, name); };
    EXPECT_EQ(0u, index("Floppy"));
    EXPECT_EQ(1u, index("CDROM"));
    EXPECT_EQ(2u, index("HDD"));
    EXPECT_EQ(4u, index("hdd")); // case matters
    EXPECT_EQ(4u, index("HD"));
    EXPECT_EQ(0u, Conversion::stringToIndex(table, table, "HDD"));
}

TEST(Conversion, ToStringIsDecimalOfEveryWidthAndSign)
{
    EXPECT_EQ("255", bytes(Conversion::toString(static_cast<unsigned char>(255))));
    EXPECT_EQ("4294967295", bytes(Conversion::toString(4294967295u)));
    EXPECT_EQ("18446744073709551615", bytes(Conversion::toString(18446744073709551615ull)));
    EXPECT_EQ("-2147483648", bytes(Conversion::toString(INT_MIN)));
    EXPECT_EQ("-32768", bytes(Conversion::toString(static_cast<short>(-32768))));
    EXPECT_EQ("-9223372036854775808", bytes(Conversion::toString(LLONG_MIN)));
    EXPECT_EQ("0", bytes(Conversion::toString(0)));
}

TEST(Conversion, ToNumberReadsDecimalAfterBlanksWithoutSignAndWrapsOnOverflow)
{
    struct
    {
        Common::string text;
        unsigned value;
    } const cases[] = {
        {"42", 42}, {"007", 7}, {"4294967295", 4294967295u}, {"   42", 42}, {"\t \t7", 7},
        {"\n5", 0}, {"\r5", 0}, // blanks: spaces and tabs only
        {"abc", 0}, {"-5", 0}, {"+5", 0}, {"12abc", 12}, {"12 34", 12}, {"3.9", 3},
        {Common::string("1\0" "2", 3), 1}, {"4294967297", 1}, {"10000000000", 1410065408u},
    };
    for (auto const& c : cases)
        EXPECT_EQ(c.value, Conversion::toNumber<unsigned int>(c.text)) << bytes(c.text);
    EXPECT_EQ(0, Conversion::toNumber<unsigned char>("256"));
    EXPECT_EQ(44, Conversion::toNumber<unsigned char>("300"));
    EXPECT_EQ(1ull, Conversion::toNumber<unsigned long long>("18446744073709551617"));

    // The reference form reports whether there were digits.
    unsigned value = 99;
    EXPECT_FALSE(Conversion::toNumber<unsigned int>("   ", value));
    EXPECT_EQ(0u, value);
    unsigned long long large = 0;
    EXPECT_TRUE(Conversion::toNumber(Common::string(" 1099511627776 kB"), large));
    EXPECT_EQ(1099511627776ull, large);
}

TEST(Conversion, MacAndIpV4AreFormattedFromBytesAndValues)
{
    unsigned char mac[6] = {0x00, 0xab, 0xcd, 0xef, 0x01, 0xFF};
    EXPECT_EQ("00:AB:CD:EF:01:FF", bytes(Conversion::MacToString(mac)));
    unsigned char ip[4] = {192, 168, 0, 1};
    EXPECT_EQ("192.168.0.1", bytes(Conversion::toIpV4String(ip)));
    EXPECT_EQ("127.0.0.1", bytes(Conversion::toIpV4String(0x0100007Fu))); // memory order
}

TEST(Conversion, IpToNumberKeepsTheScanfLeniencyAndRejectsOutOfRangeFields)
{
    unsigned char out[4] = {0xAA, 0xAA, 0xAA, 0xAA};
    EXPECT_TRUE(Conversion::ipToNumber(out, "10.20.30.255"));
    EXPECT_EQ(0, std::memcmp(out, "\x0A\x14\x1E\xFF", 4));
    // "%d.%d.%d.%d" skips blanks before numbers and ignores what follows.
    for (char const* good : {" 10.0.0.1", "10.0.0.1junk", "1.2.3.4.5", "010.1.1.1"})
        EXPECT_TRUE(Conversion::ipToNumber(out, good)) << good;
    EXPECT_EQ(10, out[0]); // decimal, not octal
    for (char const* bad : {"10.0.0.256", "-1.0.0.0", "1.2.3.1000", "99999999999.1.1.1",
                            "a.b.c.d", "", "1..2.3", "1,2,3,4"})
        EXPECT_FALSE(Conversion::ipToNumber(out, bad)) << bad;
    unsigned char shortOut[4] = {0xAA, 0xAA, 0xAA, 0xAA};
    EXPECT_FALSE(Conversion::ipToNumber(shortOut, "10.0.0"));
    EXPECT_EQ(0, std::memcmp(shortOut, "\x0A\0\0\0", 4)); // unparsed fields written as 0
}

TEST(Conversion, DatesPadMonthAndDayAndValidateNothing)
{
    struct
    {
        unsigned value;
        char const* text;
    } const cases[] = {{0x07D80A05u, "2008-10-05"}, {0x07D00109u, "2000-01-09"},
                       {0x00000000u, "0-00-00"}, {0xFFFFFFFFu, "65535-255-255"}};
    for (auto const& c : cases)
    {
        unsigned char record[4] = {static_cast<unsigned char>(c.value >> 24),
                                   static_cast<unsigned char>(c.value >> 16),
                                   static_cast<unsigned char>(c.value >> 8),
                                   static_cast<unsigned char>(c.value)};
        EXPECT_EQ(c.text, bytes(Conversion::dateToString(c.value)));
        EXPECT_EQ(c.text, bytes(Conversion::dateToString(record)));
    }
}

TEST(Conversion, ByteOrder)
{
    EXPECT_TRUE(Conversion::isHostLittleEndian());
    EXPECT_EQ(0x78563412u, Conversion::ChangeOrder<unsigned int>(0x12345678u));
    EXPECT_EQ(0x3412, Conversion::ChangeOrder<unsigned short>(0x1234));
    EXPECT_EQ(0x0807060504030201ull, Conversion::ChangeOrder<unsigned long long>(0x0102030405060708ull));
    unsigned value = Conversion::ConvertValueToBigEndian<unsigned int>(0x12345678u);
    EXPECT_EQ(0, std::memcmp(&value, "\x12\x34\x56\x78", 4));
}

} // namespace
