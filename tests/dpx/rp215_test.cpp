#include "dpx/rp215.h"

#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"

namespace {

Bytes view(const std::string &s) { return Bytes(s.data(), s.size()); }

// The dump of packets that are followed by the given CRC, by default the right one.
std::string dump_of_packets(std::string block, int crc = -1) {
    block.append(2, '\0');
    const int length = static_cast<int>(block.size());
    if (crc < 0) crc = rp215_crc(view(block), length);
    block[block.size() - 2] = static_cast<char>(crc >> 8);
    block[block.size() - 1] = static_cast<char>(crc);
    testing::internal::CaptureStdout();
    rp215_dump(view(block), length, 0);
    return testing::internal::GetCapturedStdout();
}

// A packet whose data bytes are their own offsets.
std::string packet(uint8_t type, uint8_t size) {
    ByteWriter w = big().u8(type).u8(size);
    for (unsigned i = 0; i < size; i++) w.u8(i + 2);
    return w.str();
}

}  // namespace

TEST(Rp215, Values) {
    EXPECT_DOUBLE_EQ(rpfloat16(view("\x10\x32")), 500);
    EXPECT_DOUBLE_EQ(rpfloat16(view("\xF0\x64")), 10);
    EXPECT_DOUBLE_EQ(rpfloat16(view("\x8F\xFF")), 4095e-8);
    EXPECT_EQ(rp215_crc(view("\x11\x22"), 2), 0);
    char text[5];
    getstring(text, 4, view(std::string("ab\0c", 4)));
    EXPECT_STREQ(text, "ab  ");
}

TEST(Rp215, TemporalPackets) {
    const std::string codes =
        " videotc      02:03:04:05\n videoub      06070809 (101124105)\n audiotc      0a:0b:0c:0d\n"
        " audioub      0e0f1011 (235868177)\n audiophase   12\n";
    EXPECT_EQ(
        dump_of_packets(packet(0x10, 44) + packet(0x12, 18)),
        "10/44-TEMPORAL\n" + codes +
            " kkmfg        13\n kkemulsion   14\n kk           15161718191a1b1c\n inkprefix    1d1e1f20\n"
            " ink          212223\n pulldown     24\n sequence     25\n absframes    26272829 (640100393)\n"
            " videoformat  2a\n audiomod     2b\n filmformat   2c\n filmrate     2d\n12/18-TEMPORAL\n" +
            codes + " audiomod     13\n");
}

TEST(Rp215, TextsAreAsWideAsTheirFields) {
    const auto w = big().u8(0x31).u8(44).text("Title of twenty char").text("ep 1", 8).text("crew").zeros(12);
    EXPECT_EQ(dump_of_packets(w.str()),
              "31/44-LABEL\n title        'Title of twenty char'\n episode      'ep 1    '\n"
              " crewid       'crew'\n operatorid   '    '\n directorid   '    '\n producerid   '    '\n");
}

TEST(Rp215, CameraAndDolly) {
    EXPECT_EQ(lines_from(dump_of_packets(packet(0x40, 47)), " serial", 3),
              " serialnumber 04050607\n framenumber  08090a0b/134810123\n cameraformat 0c/12\n");
    auto dolly = big().u8(0x50).u8(20).u32(0xABCDEF01).u16(0xC1F4).u16(0xF064).u16(0x8000).u32(0x0000C03F);
    dolly.u16(0x2AAA).u16(0xFFFF).u16(1);
    EXPECT_EQ(dump_of_packets(dolly.str()),
              "50/20-DOLLY\n lensid       abcdef01\n focallength  c1f4/50.0mm\n focalpos     f064/10.0m\n"
              " iris         8000/F16.0\n camheight    0000c03f/001.50m\n camtilt      2aaa/060.00\n"
              " camroll      ffff/360.01\n campan       0001/000.01\n");
}

TEST(Rp215, UserDataUnknownPacketsAndTheCrc) {
    const std::string user = big().u8(0xF0).u8(18).text("sixteen letters.\x1F~").str();
    EXPECT_EQ(dump_of_packets(user + std::string("\x99\x01?\x98\0", 5) + "not reached", 0x1234),
              "f0/18-USER\n 000 73 69 78 74 65 65 6e 20 6c 65 74 74 65 72 73 2e  sixteen letters.\n"
              " 010 1f 7e                                             ~\n"
              "99/1-Unknown 99\n98/0-Unknown 98\nCRC Wrong Calc 3852 != 1234\n");
}

TEST(Rp215, FieldsBeyondTheBlockAreZero) {
    EXPECT_EQ(lines_from(dump_of_packets(std::string("\x21\x00\x01", 3), 0x4142), "21/", 4),
              "21/0-MATERIAL\n tags         01414200\n syncmark     0000\n proddate     00000000\n");
}
