// MAC, IPv4 and date formats, byte order.
#include "common/Conversion.h"

#include "ConversionTestSupport.h"

#include <gtest/gtest.h>

#include <cstring>

using conversion_test::bytes;

namespace
{

// --- MAC -------------------------------------------------------------------

TEST(MacToString, SixUpperCasePairsSeparatedByColons)
{
    unsigned char mac[6] = {0x00, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
    Common::string text = Conversion::MacToString(mac);
    EXPECT_EQ(bytes(text), "00:1A:2B:3C:4D:5E");
    EXPECT_EQ(text.size(), 17u);
}

TEST(MacToString, ExtremeBytes)
{
    unsigned char ones[6] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(bytes(Conversion::MacToString(ones)), "FF:FF:FF:FF:FF:FF");
    unsigned char zeros[6] = {0, 0, 0, 0, 0, 0};
    EXPECT_EQ(bytes(Conversion::MacToString(zeros)), "00:00:00:00:00:00");
    unsigned char mixed[6] = {0xab, 0xcd, 0xef, 0x01, 0x23, 0x45};
    EXPECT_EQ(bytes(Conversion::MacToString(mixed)), "AB:CD:EF:01:23:45");
}

// --- IPv4 ------------------------------------------------------------------

TEST(ToIpV4String, FromBytes)
{
    unsigned char a[4] = {192, 168, 0, 1};
    EXPECT_EQ(bytes(Conversion::toIpV4String(a)), "192.168.0.1");
    unsigned char zero[4] = {0, 0, 0, 0};
    EXPECT_EQ(bytes(Conversion::toIpV4String(zero)), "0.0.0.0");
    unsigned char ones[4] = {255, 255, 255, 255};
    EXPECT_EQ(bytes(Conversion::toIpV4String(ones)), "255.255.255.255");
}

TEST(ToIpV4String, FromValueLowestByteFirst)
{
    EXPECT_EQ(bytes(Conversion::toIpV4String(0x0100007Fu)), "127.0.0.1");
    EXPECT_EQ(bytes(Conversion::toIpV4String(0x0A01A8C0u)), "192.168.1.10");
    EXPECT_EQ(bytes(Conversion::toIpV4String(0u)), "0.0.0.0");
    EXPECT_EQ(bytes(Conversion::toIpV4String(0xFFFFFFFFu)), "255.255.255.255");
}

TEST(ToIpV4String, ValueFormIsMemoryOrderOnTheTarget)
{
    unsigned value = 0x04030201u;
    unsigned char memory[4];
    std::memcpy(memory, &value, 4);
    EXPECT_EQ(bytes(Conversion::toIpV4String(value)), bytes(Conversion::toIpV4String(memory)));
}

TEST(IpToNumber, ValidAddresses)
{
    unsigned char out[4] = {0xAA, 0xAA, 0xAA, 0xAA};
    EXPECT_TRUE(Conversion::ipToNumber(out, "192.168.1.10"));
    EXPECT_EQ(out[0], 192);
    EXPECT_EQ(out[1], 168);
    EXPECT_EQ(out[2], 1);
    EXPECT_EQ(out[3], 10);
    EXPECT_TRUE(Conversion::ipToNumber(out, "0.0.0.0"));
    EXPECT_EQ(out[3], 0);
    EXPECT_TRUE(Conversion::ipToNumber(out, "255.255.255.255"));
    EXPECT_EQ(out[0], 255);
}

TEST(IpToNumber, SpecExamplesFail)
{
    unsigned char out[4] = {0xAA, 0xAA, 0xAA, 0xAA};
    EXPECT_FALSE(Conversion::ipToNumber(out, "10.0.0.256"));
    // Written anyway: 256 as a byte.
    EXPECT_EQ(out[0], 10);
    EXPECT_EQ(out[3], 0);

    unsigned char shortOut[4] = {0xAA, 0xAA, 0xAA, 0xAA};
    EXPECT_FALSE(Conversion::ipToNumber(shortOut, "10.0.0"));
    EXPECT_EQ(shortOut[0], 10);
    EXPECT_EQ(shortOut[3], 0); // a field that was not parsed is written as 0
}

TEST(IpToNumber, OutOfRangeAndMalformedFail)
{
    unsigned char out[4];
    EXPECT_FALSE(Conversion::ipToNumber(out, "-1.0.0.0"));
    EXPECT_FALSE(Conversion::ipToNumber(out, "1.2.3.1000"));
    EXPECT_FALSE(Conversion::ipToNumber(out, "99999999999.1.1.1"));
    EXPECT_FALSE(Conversion::ipToNumber(out, "a.b.c.d"));
    EXPECT_FALSE(Conversion::ipToNumber(out, ""));
    EXPECT_FALSE(Conversion::ipToNumber(out, "1..2.3"));
    EXPECT_FALSE(Conversion::ipToNumber(out, "1,2,3,4"));
}

TEST(IpToNumber, SscanfLeniencyIsKept)
{
    // "%d.%d.%d.%d" skips blanks before numbers and ignores what follows.
    unsigned char out[4];
    EXPECT_TRUE(Conversion::ipToNumber(out, " 10.0.0.1"));
    EXPECT_TRUE(Conversion::ipToNumber(out, "10.0.0.1junk"));
    EXPECT_TRUE(Conversion::ipToNumber(out, "1.2.3.4.5"));
    EXPECT_EQ(out[3], 4);
    EXPECT_TRUE(Conversion::ipToNumber(out, "010.1.1.1")); // decimal, not octal
    EXPECT_EQ(out[0], 10);
}

TEST(IpToNumber, RoundTripsToIpV4String)
{
    unsigned char in[4] = {10, 20, 30, 40};
    unsigned char out[4] = {0, 0, 0, 0};
    EXPECT_TRUE(Conversion::ipToNumber(out, Conversion::toIpV4String(in)));
    EXPECT_EQ(std::memcmp(in, out, 4), 0);
}

// --- Dates -----------------------------------------------------------------

TEST(DateToString, SpecExample)
{
    EXPECT_EQ(bytes(Conversion::dateToString(0x07D80A05u)), "2008-10-05");
    unsigned char record[4] = {0x07, 0xD8, 0x0A, 0x05};
    EXPECT_EQ(bytes(Conversion::dateToString(record)), "2008-10-05");
}

TEST(DateToString, LeadingZeroExactlyUpToNine)
{
    unsigned char a[4] = {0x07, 0xD0, 1, 9};
    EXPECT_EQ(bytes(Conversion::dateToString(a)), "2000-01-09");
    unsigned char b[4] = {0x07, 0xDF, 12, 31};
    EXPECT_EQ(bytes(Conversion::dateToString(b)), "2015-12-31");
    unsigned char c[4] = {0x07, 0xDA, 10, 10};
    EXPECT_EQ(bytes(Conversion::dateToString(c)), "2010-10-10");
}

TEST(DateToString, YearIsNotPaddedAndNothingIsValidated)
{
    unsigned char zero[4] = {0, 0, 0, 0};
    EXPECT_EQ(bytes(Conversion::dateToString(zero)), "0-00-00");
    unsigned char small[4] = {0, 99, 2, 3};
    EXPECT_EQ(bytes(Conversion::dateToString(small)), "99-02-03");
    EXPECT_EQ(bytes(Conversion::dateToString(0xFFFFFFFFu)), "65535-255-255");
}

TEST(DateToString, BothFormsAgree)
{
    for (unsigned value : {0x07D80A05u, 0x07E30101u, 0x0000090Au, 0x12345678u})
    {
        unsigned char record[4] = {
            static_cast<unsigned char>(value >> 24), static_cast<unsigned char>(value >> 16),
            static_cast<unsigned char>(value >> 8), static_cast<unsigned char>(value)};
        EXPECT_EQ(bytes(Conversion::dateToString(value)), bytes(Conversion::dateToString(record)));
    }
}

// --- Byte order ------------------------------------------------------------

TEST(ByteOrder, TheTargetIsLittleEndian)
{
    EXPECT_TRUE(Conversion::isHostLittleEndian());
}

TEST(ByteOrder, ChangeOrderReversesTheBytes)
{
    EXPECT_EQ(Conversion::ChangeOrder<unsigned int>(0x12345678u), 0x78563412u);
    EXPECT_EQ(Conversion::ChangeOrder<unsigned int>(0u), 0u);
    EXPECT_EQ(Conversion::ChangeOrder<unsigned int>(0xFF000000u), 0x000000FFu);
    EXPECT_EQ(
        Conversion::ChangeOrder<unsigned int>(Conversion::ChangeOrder<unsigned int>(0xDEADBEEFu)),
        0xDEADBEEFu);
    EXPECT_EQ(Conversion::ChangeOrder<unsigned short>(0x1234), 0x3412);
    EXPECT_EQ(Conversion::ChangeOrder<unsigned long long>(0x0102030405060708ull),
              0x0807060504030201ull);
}

TEST(ByteOrder, BigEndianPutsTheHighByteFirstInMemory)
{
    unsigned value = Conversion::ConvertValueToBigEndian<unsigned int>(0x12345678u);
    unsigned char memory[4];
    std::memcpy(memory, &value, 4);
    EXPECT_EQ(memory[0], 0x12);
    EXPECT_EQ(memory[1], 0x34);
    EXPECT_EQ(memory[2], 0x56);
    EXPECT_EQ(memory[3], 0x78);
}

} // namespace
