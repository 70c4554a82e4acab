#include "dpx/rp215.h"

#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/printed.h"

namespace {

Bytes view(const std::string &s) { return Bytes(s.data(), s.size()); }

// The dump of packets that are followed by the given CRC, by default the right one.
std::string dump_of_packets(std::string block, int crc = -1) {
    block.append(2, '\0');
    const int length = static_cast<int>(block.size());
    if (crc < 0) crc = rp215_crc(view(block), length);
    block[block.size() - 2] = static_cast<char>(crc >> 8);
    block[block.size() - 1] = static_cast<char>(crc);
    return printed([&] { rp215_dump(view(block), length, 0); });
}

std::string packet(uint8_t type, uint8_t size) { return big().u8(type, size).raw(counting(size)).str(); }

}  // namespace

TEST(Rp215, Values) {
    EXPECT_DOUBLE_EQ(rpfloat16(view("\x10\x32")), 500);
    EXPECT_DOUBLE_EQ(rpfloat16(view("\x70\x02")), 2e7);
    EXPECT_DOUBLE_EQ(rpfloat16(view("\xF0\x64")), 10);
    EXPECT_DOUBLE_EQ(rpfloat16(view("\x8F\xFF")), 4095e-8);
    EXPECT_EQ(rp215_crc(view("\x11\x22"), 2), 0);
    char text[5];
    getstring(text, 4, view(std::string("ab\0c", 4)));
    EXPECT_STREQ(text, "ab  ");
}

TEST(Rp215, EveryField) {
    Transcript transcript;
    SHOW(dump_of_packets(packet(0x10, 44) + packet(0x11, 18) + packet(0x12, 18) + packet(0x20, 67)));
    SHOW(dump_of_packets(packet(0x21, 46) + packet(0x30, 96) + packet(0x31, 44) + packet(0x40, 47)));
    SHOW(dump_of_packets(packet(0x50, 20)));
}

TEST(Rp215, TextsAreAsWideAsTheirFields) {
    Transcript transcript;
    const auto w = big().u8(0x31, 44).text("Title of twenty char").text("ep 1", 8).text("crew").zeros(12);
    SHOW(dump_of_packets(w.str()));
}

TEST(Rp215, SignsAndLimitsOfTheDolly) {
    Transcript transcript;
    auto dolly = big().u8(0x50, 20).u32(0xABCDEF01).u16(0xC1F4, 0xF064, 0x8000).u32(0x0000C03F);
    dolly.u16(0x2AAA, 0xFFFF, 1);
    SHOW(dump_of_packets(dolly.str()));
}

TEST(Rp215, UserDataUnknownPacketsAndTheCrc) {
    Transcript transcript;
    const std::string user = big().u8(0xF0, 18).text("sixteen letters.\x1F~").str();
    SHOW(dump_of_packets(user + std::string("\x99\x01?\x98\0", 5) + "not reached", 0x1234));
}

TEST(Rp215, FieldsBeyondTheBlockAreZero) {
    const std::string user = printed([] {
        rp215_dump(view("\xF0\x04"
                        "ab"),
                   8, 1);
    });
    EXPECT_NE(user.find(" 61 62 00 00 "), std::string::npos);
    EXPECT_EQ(lines_from(dump_of_packets(std::string("\x21\x00\x01", 3), 0x4142), "21/", 4),
              "21/0-MATERIAL\n tags         01414200\n syncmark     0000\n proddate     00000000\n");
}
