#include "common/values.h"

#include <gtest/gtest.h>

#include "common/hexrow.h"
#include "common/line_buffer.h"
#include "common/name_pattern.h"
#include "support/printed.h"

TEST(Values, UndefinedValuesAreEmptyText) {
    EXPECT_STREQ(checkuint8(0xFF), "");
    EXPECT_STREQ(checkuint8(0x1FE), "254");
    EXPECT_STREQ(checkuint16(0xFFFF), "");
    EXPECT_STREQ(checkuint16(0), "0");
    EXPECT_STREQ(checkuint32(0xFFFFFFFF, 1), "");
    EXPECT_STREQ(checkuint32(0xFFFFFFFF, 0), "");
    EXPECT_STREQ(checkuint32(255, 1), "000000ff");
    EXPECT_STREQ(checkuint32(0x80000000, 0), "-2147483648");
    EXPECT_STREQ(checkreal(float_of_bits(0xFFFFFFFF)), "");
    EXPECT_STREQ(checkreal(float_of_bits(0x7FC00000)), "#NAN (Invalid Value)");
    EXPECT_STREQ(checkreal(1.5F), "1.5");
    EXPECT_STREQ(checkreal(float_of_bits(0x7F800000)), "inf");
    EXPECT_STREQ(cineonreal(float_of_bits(0x7F800000)), "");
    EXPECT_STREQ(cineonreal(float_of_bits(0xFFFFFFFF)), "-nan");
}

TEST(Values, TextFields) {
    EXPECT_STREQ(checkascii(Bytes("ab\0x", 4), 4), "'ab'");
    EXPECT_STREQ(checkascii(Bytes("\0abc", 4), 4), "");
    EXPECT_STREQ(checkascii(Bytes("\xFFgood", 5), 5), "Error, 0xff in ascii data");
    const std::string full(300, 'y');
    EXPECT_EQ(checkascii(Bytes(full.data(), full.size()), 100), "'" + std::string(100, 'y') + "'");
    EXPECT_STREQ(checkascii(Bytes("cut", 3), 100), "'cut'");
}

TEST(Values, TheRingComesRoundAfterSixteenCalls) {
    uint32_t size = 0;
    char *first = get_buffer(&size);
    EXPECT_EQ(size, 8192U);
    for (int i = 0; i < 15; i++) EXPECT_NE(get_buffer(), first);
    EXPECT_EQ(get_buffer(), first);
    // Each of the sixteen knows what it holds.
    for (uint64_t i = 0; i < 16; i++) {
        const char *text = get_buffer();
        ring_holds({.kind = Piece::hexadecimal, .number = i});
        EXPECT_EQ(ring_value(text).number, i);
        EXPECT_EQ(ring_value(text).kind, Piece::hexadecimal);
    }
    const std::string longer(9000, 'y');
    EXPECT_EQ(printable_text(Bytes(longer.data(), longer.size()), longer.size(), '?'),
              longer.substr(0, 8191));
}

TEST(Values, ByteOrders) {
    const Bytes b("\x01\x02\x03\x04", 4);
    EXPECT_EQ(tiffuint32(b, 0), 0x04030201U);
    EXPECT_EQ(tiffuint32(b, 1), 0x01020304U);
    EXPECT_EQ(tiffuint16(b, 1), 0x0102);
    EXPECT_EQ(get_uint16(b.from(3)), 0x0004);
    uint16_t word = 0x1234;
    swap16(&word);
    EXPECT_EQ(word, 0x3412);
    uint32_t quad = 0x12345678;
    swap32(&quad);
    EXPECT_EQ(quad, 0x78563412U);
    EXPECT_EQ(tiffchar(0x1F), '.');
    EXPECT_EQ(tiffchar(0x20), ' ');
    EXPECT_EQ(tiffchar(0x7E), '~');
    EXPECT_EQ(tiffchar(0x7F), '.');
}

TEST(NamePattern, OneIntegerConversionAtMost) {
    for (const char *good : {"plain", "f%d", "f%05d.jpc", "100%%_%X", "%-+ #08.003u", "%999i", "%.o", ""}) {
        EXPECT_TRUE(valid_name_pattern(good)) << good;
    }
    for (const char *bad :
         {"%s", "%n", "%d%d", "%", "a%", "%1000d", "%.1000d", "%ld", "%*d", "%c", "%f", "% ", "%5%"}) {
        EXPECT_FALSE(valid_name_pattern(bad)) << bad;
    }
    EXPECT_EQ(name_from_pattern("f%04d.dpx", -1), "f-001.dpx");
    EXPECT_EQ(name_from_pattern("%999d", 5), std::string(998, ' ') + "5");
}

TEST(HexRow, CellsAreTheSameWithAndWithoutShuffles) {
    std::string expected;
    const std::string out = printed([&] {
        for (unsigned first = 0; first < 256; first++) {
            uint8_t values[16];
            for (unsigned i = 0; i < 16; i++) values[i] = static_cast<uint8_t>(first + 17 * i);
            LineBuffer row;
            put_hexrow(row, values, {.first_printable = 0x7F});
            char cells[49];
            copy_hexcells(cells, values);
            expected += std::string(cells, 48) + std::string(16, '.') + "\n";
        }
    });
    EXPECT_EQ(out, expected);
}

TEST(Print, ExtremesAndLongTexts) {
    const std::string name(100'000, 'n');
    const std::string out = printed([&] {
        LineBuffer line;
        line.signed_decimal(INT64_MIN);
        line.decimal(7, 4);
        print("%s", "");
        line.upper_hex(0xBEEF);
        line.fill('-', 200'000);
        print("%s%c", name.c_str(), '!');
        line.text(name);
    });
    EXPECT_EQ(out, "-9223372036854775808   7BEEF" + std::string(200'000, '-') + name + "!" + name);
}
