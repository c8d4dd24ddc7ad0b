// MAC, IPv4 and date formats, byte order.
#include "common/Conversion.h"

#include "ConversionTestSupport.h"

#include <gtest/gtest.h>

#include <cstring>

using conversion_test::bytes;

namespace
{

TEST(MacToString, SixUpperCasePairsSeparatedByColons)
{
    unsigned char mixed[6] = {0x00, 0xab, 0xcd, 0xef, 0x01, 0xFF};
    EXPECT_EQ(bytes(Conversion::MacToString(mixed)), "00:AB:CD:EF:01:FF");
}

TEST(ToIpV4String, FromBytesAndFromAValueInMemoryOrder)
{
    unsigned char a[4] = {192, 168, 0, 1};
    EXPECT_EQ(bytes(Conversion::toIpV4String(a)), "192.168.0.1");
    unsigned char ones[4] = {255, 255, 255, 255};
    EXPECT_EQ(bytes(Conversion::toIpV4String(ones)), "255.255.255.255");
    EXPECT_EQ(bytes(Conversion::toIpV4String(0x0100007Fu)), "127.0.0.1");
    EXPECT_EQ(bytes(Conversion::toIpV4String(0u)), "0.0.0.0");
}

TEST(IpToNumber, ValidAddressesRoundTripAndSscanfLeniencyIsKept)
{
    unsigned char in[4] = {10, 20, 30, 255};
    unsigned char out[4] = {0xAA, 0xAA, 0xAA, 0xAA};
    EXPECT_TRUE(Conversion::ipToNumber(out, Conversion::toIpV4String(in)));
    EXPECT_EQ(std::memcmp(in, out, 4), 0);
    EXPECT_TRUE(Conversion::ipToNumber(out, "0.0.0.0"));
    EXPECT_EQ(out[3], 0);

    // "%d.%d.%d.%d" skips blanks before numbers and ignores what follows.
    EXPECT_TRUE(Conversion::ipToNumber(out, " 10.0.0.1"));
    EXPECT_TRUE(Conversion::ipToNumber(out, "10.0.0.1junk"));
    EXPECT_TRUE(Conversion::ipToNumber(out, "1.2.3.4.5"));
    EXPECT_EQ(out[3], 4);
    EXPECT_TRUE(Conversion::ipToNumber(out, "010.1.1.1")); // decimal, not octal
    EXPECT_EQ(out[0], 10);
}

TEST(IpToNumber, OutOfRangeShortAndMalformedFail)
{
    unsigned char out[4] = {0xAA, 0xAA, 0xAA, 0xAA};
    EXPECT_FALSE(Conversion::ipToNumber(out, "10.0.0.256"));
    EXPECT_EQ(out[0], 10); // written anyway: 256 as a byte
    EXPECT_EQ(out[3], 0);

    unsigned char shortOut[4] = {0xAA, 0xAA, 0xAA, 0xAA};
    EXPECT_FALSE(Conversion::ipToNumber(shortOut, "10.0.0"));
    EXPECT_EQ(shortOut[0], 10);
    EXPECT_EQ(shortOut[3], 0); // a field that was not parsed is written as 0

    for (char const* bad : {"-1.0.0.0", "1.2.3.1000", "99999999999.1.1.1", "a.b.c.d", "", "1..2.3",
                            "1,2,3,4"})
        EXPECT_FALSE(Conversion::ipToNumber(out, bad)) << bad;
}

TEST(DateToString, BothFormsPadMonthAndDayToTwoDigitsAndValidateNothing)
{
    struct
    {
        unsigned value;
        char const* text;
    } const cases[] = {
        {0x07D80A05u, "2008-10-05"}, {0x07D00109u, "2000-01-09"}, {0x07DA0A0Au, "2010-10-10"},
        {0x00000000u, "0-00-00"},    {0x00630203u, "99-02-03"},   {0xFFFFFFFFu, "65535-255-255"},
    };
    for (auto const& c : cases)
    {
        unsigned char record[4] = {
            static_cast<unsigned char>(c.value >> 24), static_cast<unsigned char>(c.value >> 16),
            static_cast<unsigned char>(c.value >> 8), static_cast<unsigned char>(c.value)};
        EXPECT_EQ(bytes(Conversion::dateToString(c.value)), c.text);
        EXPECT_EQ(bytes(Conversion::dateToString(record)), c.text);
    }
}

TEST(ByteOrder, ChangeOrderReversesTheBytesAndBigEndianPutsTheHighByteFirst)
{
    EXPECT_TRUE(Conversion::isHostLittleEndian());
    EXPECT_EQ(Conversion::ChangeOrder<unsigned int>(0x12345678u), 0x78563412u);
    EXPECT_EQ(Conversion::ChangeOrder<unsigned short>(0x1234), 0x3412);
    EXPECT_EQ(Conversion::ChangeOrder<unsigned long long>(0x0102030405060708ull),
              0x0807060504030201ull);

    unsigned value = Conversion::ConvertValueToBigEndian<unsigned int>(0x12345678u);
    unsigned char memory[4];
    std::memcpy(memory, &value, 4);
    unsigned char const expected[4] = {0x12, 0x34, 0x56, 0x78};
    EXPECT_EQ(std::memcmp(memory, expected, 4), 0);
}

} // namespace
