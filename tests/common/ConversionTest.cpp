#include "common/Conversion.h"
#include "common/Hex.h"
#include "common/JSONText.h"

#include "tests/support/Text.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace
{

TEST(Conversion, SmallArithmeticRules)
{
    // Percentages go to the nearest multiple of five, 254 to 255.
    int const percentages[][2] = {{0, 0},     {1, 0},     {2, 0},     {3, 5},
                                  {4, 5},     {52, 50},   {53, 55},   {99, 100},
                                  {252, 250}, {253, 255}, {254, 255}, {255, 255}};
    for (auto const& c : percentages)
        EXPECT_EQ(c[1], Conversion::clampPercentage(static_cast<unsigned char>(c[0]))) << c[0];
    // A zero operand counts as 1; beyond 32 bits the multiple wraps.
    unsigned const multiples[][3] = {{4, 6, 12}, {7, 5, 35}, {12, 18, 36},
                                     {0, 5, 5},  {5, 0, 5},  {0, 0, 1}};
    for (auto const& c : multiples)
        EXPECT_EQ(c[2], Conversion::leastCommonMultiple(c[0], c[1])) << c[0] << ", " << c[1];
    EXPECT_EQ(4294967295u, Conversion::leastCommonMultiple(65535, 65537));
    EXPECT_EQ(65536u, Conversion::leastCommonMultiple(65536, 65537)); // 2^32 + 65536
    unsigned char record[3] = {12, 34, 56};
    EXPECT_EQ("0:0:0", text(Conversion::timeToString(record))); // always the placeholder
    EXPECT_EQ("0:0:0", text(Conversion::timeToString(nullptr)));
    static char const* const table[] = {"Floppy", "CDROM", "HDD", "CDROM"};
    EXPECT_EQ(1u, Conversion::stringToIndex(table, table + 4, "CDROM")); // the first equal one
    EXPECT_EQ(4u, Conversion::stringToIndex(table, table + 4, "hdd"));   // or the count
}

TEST(Conversion, XtoiReportsAStatusAndLeavesTheDigitsAfterABadCharacter)
{
    using namespace Conversion;
    struct
    {
        Common::string text;
        int status;
        unsigned value; // 77: left alone
    } const cases[] = {
        {"", XTOI_EMPTY, 77},       {"123456789", XTOI_TOO_LONG, 77}, {"aBcD", XTOI_OK, 0xABCD},
        {"FFFFFFFF", XTOI_OK, ~0u}, {"1G", XTOI_NOT_HEX, 0},          {"G1", XTOI_NOT_HEX, 1},
        {"0x10", XTOI_NOT_HEX, 16}, {"-1", XTOI_NOT_HEX, 1},          {"\xC3\xA9", XTOI_NOT_HEX, 0},
        {Common::string("1\0zz", 4), XTOI_OK, 1}, // the length ends at the first NUL
        {Common::string("\00012", 3), XTOI_EMPTY, 77},
        {Common::string("12345678\0009", 10), XTOI_OK, 0x12345678},
    };
    for (auto const& c : cases)
    {
        unsigned value = 77;
        EXPECT_EQ(c.status, xtoi(c.text, value)) << text(c.text);
        EXPECT_EQ(c.value, value) << text(c.text);
    }
}

TEST(Conversion, HexPairsAreReadUnvalidatedAndAShortTextReadsItsNul)
{
    // A letter counts its distance from 'A' plus 10; a missing second
    // character is the NUL, counted as 0 - '0'.
    std::pair<char const*, int> const cases[] = {
        {"a0", 160}, {"7E", 126}, {"41zz", 0x41}, {"G0", 0}, {"zz", 83}, {"4", 16}, {"", 208}};
    for (auto const& c : cases)
        EXPECT_EQ(c.second, Conversion::hexStringToInt(c.first)) << c.first;
    EXPECT_EQ("Hello", text(Conversion::stringToArray("48656c6C6F")));
    EXPECT_EQ(std::string("\0\xFF", 2), text(Conversion::stringToArray("00FF")));
    EXPECT_EQ(std::string("\xAB\x90", 2), text(Conversion::stringToArray("ABC")));
    EXPECT_EQ("00|0001|1234ABCD",
              text(IN_HEX_2(0) + "|" + IN_HEX_4(1) + "|" + IN_HEX_8(0x1234ABCDu)));
}

TEST(Conversion, ToNumberReadsDecimalAfterBlanksWithoutSignAndWrapsOnOverflow)
{
    std::pair<Common::string, unsigned> const cases[] = {
        {"007", 7}, {"4294967295", 4294967295u}, {"   42", 42}, {"\t \t7", 7}, {"\n5", 0},
        {"\r5", 0}, {"-5", 0}, {"+5", 0}, {"12 34", 12}, {"3.9", 3}, {"4294967297", 1},
        {Common::string("1\0002", 3), 1}, {"10000000000", 1410065408u}};
    for (auto const& c : cases)
        EXPECT_EQ(c.second, Conversion::toNumber<unsigned int>(c.first)) << text(c.first);
    EXPECT_EQ(44, Conversion::toNumber<unsigned char>("300"));
    EXPECT_EQ(1ull, Conversion::toNumber<unsigned long long>("18446744073709551617"));
    unsigned value = 99;
    EXPECT_FALSE(Conversion::toNumber<unsigned int>("   ", value)); // were there digits?
    EXPECT_EQ(0u, value);
    unsigned long long large = 0;
    EXPECT_TRUE(Conversion::toNumber(Common::string(" 1099511627776 kB"), large));
    EXPECT_EQ(1099511627776ull, large);

    EXPECT_EQ("18446744073709551615", text(Conversion::toString(18446744073709551615ull)));
    EXPECT_EQ("-9223372036854775808", text(Conversion::toString(LLONG_MIN)));
    EXPECT_EQ("-32768", text(Conversion::toString(static_cast<short>(-32768))));
}

TEST(Conversion, AddressesAndDates)
{
    unsigned char mac[6] = {0x00, 0xab, 0xcd, 0xef, 0x01, 0xFF};
    EXPECT_EQ("00:AB:CD:EF:01:FF", text(Conversion::MacToString(mac)));
    unsigned char ip[4] = {192, 168, 0, 1};
    EXPECT_EQ("192.168.0.1", text(Conversion::toIpV4String(ip)));
    EXPECT_EQ("127.0.0.1", text(Conversion::toIpV4String(0x0100007Fu))); // memory order

    // "%d.%d.%d.%d": blanks before numbers and what follows are ignored.
    unsigned char out[4];
    for (char const* good : {" 10.0.0.1", "1.2.3.4.5", "010.20.30.255junk"})
        EXPECT_TRUE(Conversion::ipToNumber(out, good)) << good;
    EXPECT_EQ(0, std::memcmp(out, "\x0A\x14\x1E\xFF", 4)); // decimal, not octal
    for (char const* bad : {"10.0.0.256", "-1.0.0.0", "99999999999.1.1.1", "a.b.c.d", "1..2.3"})
        EXPECT_FALSE(Conversion::ipToNumber(out, bad)) << bad;
    EXPECT_FALSE(Conversion::ipToNumber(out, "10.0.0"));
    EXPECT_EQ(0, std::memcmp(out, "\x0A\0\0\0", 4)); // unparsed fields written as 0

    unsigned char record[4] = {0x07, 0xD0, 0x01, 0x09};
    EXPECT_EQ("2000-01-09", text(Conversion::dateToString(record)));
    EXPECT_EQ("2008-10-05", text(Conversion::dateToString(0x07D80A05u)));
    EXPECT_EQ("65535-255-255", text(Conversion::dateToString(0xFFFFFFFFu))); // not validated

    EXPECT_EQ(0x3412, Conversion::ChangeOrder<unsigned short>(0x1234));
    EXPECT_EQ(0x0807060504030201ull,
              Conversion::ChangeOrder<unsigned long long>(0x0102030405060708ull));
    unsigned value = Conversion::ConvertValueToBigEndian<unsigned int>(0x12345678u);
    EXPECT_EQ(0, std::memcmp(&value, "\x12\x34\x56\x78", 4));
}

typedef std::vector<std::pair<std::string, std::string>> Cases;

Common::string make(std::string const& s)
{
    return Common::string(s.data(), static_cast<unsigned>(s.size()));
}

TEST(Base64, EncodesAndDecodesRfc4648VectorsAndStopsDecodingAtAForeignCharacter)
{
    EXPECT_EQ("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/",
              text(BASE64_CHARACTERS));
    for (auto const& c : Cases{{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foobar", "Zm9vYmFy"},
                               {std::string("\0", 1), "AA=="}, {"\xFB\xFF", "+/8="}})
    {
        EXPECT_EQ(c.second, text(Conversion::base64Encode(make(c.first)))) << c.first;
        EXPECT_EQ(c.first, text(Conversion::base64Decode(make(c.second)))) << c.second;
    }
    std::string encoded = text(Conversion::base64Encode(make(std::string(300, 'x'))));
    EXPECT_EQ(400u, encoded.size()); // no line breaks
    // Decoding stops at padding or a foreign character and drops partial groups.
    for (auto const& c :
         Cases{{"TQ", "M"}, {"T", ""}, {"TWFuT", "Man"}, {"Zm9vYmE", "fooba"}, {"TWFu=TWFu", "Man"},
               {"TQ=x", "M"}, {"TW Fu", "M"}, {"-_-_", ""}, {"TWFu\xC3\xA9TWFu", "Man"},
               {std::string("TW\0Fu", 5), "M"}, {"TR==", "M"}, {"TWF=", "Ma"}})
        EXPECT_EQ(c.second, text(Conversion::base64Decode(make(c.first)))) << c.first;
}

// Only the shape is checked: overlong forms and surrogates stay.
TEST(ToValidUtf8, KeepsWellShapedSequencesAndDropsStrayTruncatedAndInterruptedBytes)
{
    for (std::string const& kept :
         {std::string("a\0\t\x7F", 4), std::string("\xC3\xA9z\xE2\x82\xAC\xF0\x9F\x98\x80"),
          std::string("\xF8\x88\x80\x80\x80\xFD\x84\x80\x80\x80\x80"),
          std::string("\xC0\x80\xED\xA0\x80")})
        EXPECT_EQ(kept, text(Conversion::toValidUTF8(make(kept))));
    for (auto const& c :
         Cases{{"\x41\xC3\xA9\xFF\xFE\x42", "\x41\xC3\xA9\x42"}, {"A\xC3", "A"},
               {"\xFE\x80\x80\x80\x80\x80\x80", ""}, {"\x80\xC3\xA9\xA9", "\xC3\xA9"},
               {"A\xF0\x9F\x98", "A"}, {"A\xFC\x84\x80\x80\x80", "A"}, {"\xC3\101", "A"},
               {"\xF0\x9F\101\x80", "A"}, {"\xC3\xC3\xA9", "\xC3\xA9"},
               {std::string("\xC3\0", 2), std::string("\0", 1)}})
        EXPECT_EQ(c.second, text(Conversion::toValidUTF8(make(c.first)))) << c.first;
}

TEST(JSONText, EscapesQuotesBackslashesControlAndHighBytesOnly)
{
    std::string const value("admin 2/x \"b\\c\0\n\x1F\x7F\xE9\xFF", 20);
    EXPECT_EQ("admin 2/x \\\"b\\\\c\\u0000\\u000A\\u001F\\u007F\\u00E9\\u00FF",
              text(Conversion::toJSONText(make(value))));
}

} // namespace
