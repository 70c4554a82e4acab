#include "gxf/packets_test.h"

#include <gtest/gtest.h>

#include "support/command.h"

namespace {

std::string section(const ByteWriter &tags) { return big().u16(tags.size()).raw(tags.str()).str(); }

// A media packet with the four bytes of field information given.
std::string media(uint8_t type, const std::string &info, const std::string &data = "") {
    return packet(0xBF, big().u8(type).u8(2).u32(7).hex(info).u32(0xFFFFFFFF).u8(0x81).u8(0).raw(data).str());
}

TEST(Map, EveryTag) {
    auto material = big();
    material.u8(0x40).u8(7).text("a\tb").zeros(1).text("cut").u8(0x41).u8(4).u32(0xFFFFFFFF);
    material.u8(0x42).u8(4).u32(2).u8(0x43).u8(4).u32(3).u8(0x44).u8(4).u32(4).u8(0x45).u8(4).u32(0xC0000000);
    material.u8(0x46).u8(4).u32(6).u8(0x47).u8(8).u64(UINT64_MAX - 6).u8(0x60).u8(200).zeros(200);
    auto track = big();
    track.u8(0x4C).u8(2).text("f").zeros(1).u8(0x4D).u8(8).u64(0xAB00000000).u8(0x4E).u8(4).u32(1);
    track.u8(0x4F).u8(3).text("Br.").u8(0x50).u8(4).u32(3).u8(0x51).u8(4).u32(UINT32_MAX - 1);
    track.u8(0x52).u8(4).u32(2).u8(0x50).u8(4).u32(9).u8(0x51).u8(4).u32(4);
    auto tracks = big();
    tracks.u8(0x80 + 11).u8(0xC0 + 5).raw(section(track));
    tracks.u8(26).u8(0).u16(6).u8(0x50).u8(4).u32(UINT32_MAX);
    const std::string map = big().u8(0xE3).u8(0).raw(section(material)).raw(section(tracks)).str();
    EXPECT_EQ(dump_of(packet(0xBC, map) + kEnd),
              "Fileformat:GXF\n"
              "00000000 map 348\n"
              " Version 3\n"
              " sectionlength 257\n"
              "  Tag 0x40   7 filename   'a.b'\n"
              "  Tag 0x41   4 firstfield -1\n"
              "  Tag 0x42   4 lastfield  2\n"
              "  Tag 0x43   4 markin     3\n"
              "  Tag 0x44   4 markout    4\n"
              "  Tag 0x45   4 filesize   3298534883328\n"
              "  Tag 0x46   4 reserved   6\n"
              "  Tag 0x47   8 reserved   -7\n"
              "  Tag 0x60 200 \n"
              " sectionlength 69\n"
              "  mediatype 11 MPEG2/525\n"
              "  trackid   5\n"
              "  length    55\n"
              "   Tag 0x4c   2 filename   'f'\n"
              "   Tag 0x4d   8 auxinfo          ab00000000\n"
              "   Tag 0x4e   4 version    1\n"
              "   Tag 0x4f   3 mpeginfo   'Br.'\n"
              "   Tag 0x50   4 framerate  3 40\n"
              "   Tag 0x51   4 lines      -2 NotAvailable\n"
              "   Tag 0x52   4 fields     2\n"
              "   Tag 0x50   4 framerate  9 ?\n"
              "   Tag 0x51   4 lines      4 1080\n"
              "  mediatype -102 ?\n"
              "  trackid   -192\n"
              "  length    6\n"
              "   Tag 0x50   4 framerate  -1 NotApplicable\n"
              "0000015c end of stream 16\n");
}

// Sections end with the payload, an empty one still has a tag, and reserved packets hold maps.
TEST(Map, Damaged) {
    std::string below_header = packet(0xBC, "");
    below_header[9] = 15;
    EXPECT_EQ(dump_of(packet(0xFA, big().hex("60000000 4300").str()) +
                      packet(0xFE, big().hex("E000FFFF 4304000000").str()) +
                      packet(0xFF, big().hex("E0").str()) + kEnd),
              "Fileformat:GXF\n"
              "00000000 reserved 22\n Version 0\ngxfmap: Error @ 0\n sectionlength 0\n"
              "  Tag 0x43   0 markin     0\n sectionlength 17152\n"
              "00000016 reserved 25\n Version 0\n sectionlength 65535\n  Tag 0x43   4 markin     0\n"
              "0000002f reserved 17\n Version 0\n"
              "00000040 end of stream 16\n");
    EXPECT_EQ(dump_of(below_header),
              "Fileformat:GXF\n00000000 map 15\ngxfmap: fread error\ngxftag: Format wrong\n");
    EXPECT_EQ(dump_of(packet(0xBC, "\xE0").substr(0, 16)),
              "Fileformat:GXF\n00000000 map 17\ngxfmap: fread error\ngxftag: fread error\n");
}

TEST(Media, FieldInformation) {
    EXPECT_EQ(dump_of(media(10, "01000200") + media(11, "FF010203") + media(20, "00000010") +
                      media(13, "03000000") + media(25, "01020304") + media(99, "01020304") +
                      media(3, "00000000").substr(0, 20)),
              "Fileformat:GXF\n"
              "00000000 media 32\n track     2 10-Audio/16bit\n"
              " fieldnr   media:7 timeline:-1 flags:81\n info      start:256 end:512\n"
              "00000020 media 32\n track     2 11-MPEG2/525\n"
              " fieldnr   media:7 timeline:-1 flags:81\n info      length:66051 B-Frame \n"
              "00000040 media 32\n track     2 20-MPEG2/HDTV\n"
              " fieldnr   media:7 timeline:-1 flags:81\n info      length:16 \n"
              "00000060 media 32\n track     2 13-DV/525/25Mbit\n"
              " fieldnr   media:7 timeline:-1 flags:81\n info      length:12288\n"
              "00000080 media 32\n track     2 25-DV/HDTV/100Mbit\n"
              " fieldnr   media:7 timeline:-1 flags:81\n info      1 2 3 4\n"
              "000000a0 media 32\n track     2 99-?\n"
              " fieldnr   media:7 timeline:-1 flags:81\n info      1 2 3 4\n"
              "000000c0 media 32\ngxfmedia: fread error\ngxftag: fread error\n");
}

// Only whole entries inside the payload are shown; either drop-frame flag gives the "*".
TEST(Media, Timecodes) {
    const std::string codes = big().hex("1122334455667783 1002300940085267 24138516").str();
    EXPECT_EQ(lines_from(dump_of(media(8, "00000005", codes) + media(24, "00010001", codes) + kEnd), " info"),
              " info      start:0 end:5\n"
              "   0 37:65:43:21  87654321\n"
              "   1 32:00:10:20* 65040301\n"
              "00000034 media 52\n track     2 24-Timecode/HDTV\n"
              " fieldnr   media:7 timeline:-1 flags:81\n info      start:1 end:1\n"
              "00000068 end of stream 16\n");
}

TEST(FieldLocator, EntriesThatAreSet) {
    auto table = little().u32(0x40000000).u32(3).zeros(4000);
    table.at(8).u32(9).at(8 + 4 * 2).u32(4).at(8 + 4 * 999).u32(0xFFFFFFFF);
    EXPECT_EQ(dump_of(packet(0xFC, table.str()) + packet(0xFC, table.str().substr(8)) +
                      packet(0xFC, table.str()).substr(0, 4023)),
              "Fileformat:GXF\n"
              "00000000 field locator table 4024\n"
              " fields per entry:  1073741824\n"
              " number of entries: 3\n"
              "  entry[  2]: field -2147483648 @          4 KB [0x00000004] = 0x            1000 bytes\n"
              "  entry[999]: field -1073741824 @         -1 KB [0xFFFFFFFF] = 0x     3fffffffc00 bytes\n"
              "00000fb8 field locator table 4016\n"
              "size != 4 + 4 + 4 * 1000\n"
              "00001f68 field locator table 4024\n"
              "gxflocator: fread error\n"
              "gxftag: fread error\n");
}

TEST(Walk, StopsAtABadHeader) {
    const std::string start = packet(0xBF, std::string(16, '\0'));
    const auto ends_with = [&](const std::string &next) { return lines_from(dump_of(start + next), "gxf"); };
    for (const size_t wrong : {0, 4, 5, 13, 14, 15}) {
        std::string header = kEnd;
        header[wrong] = '\x55';
        EXPECT_EQ(ends_with(header), "gxftag: Format wrong\n") << wrong;
    }
    EXPECT_EQ(ends_with(kEnd.substr(0, 15)), "gxftag: Format wrong\n");
    EXPECT_EQ(ends_with(""), "gxftag: fread error\n");
    EXPECT_EQ(ends_with(big().raw(kEnd).at(6).u32(0).str()), "");
    EXPECT_EQ(ends_with(kEnd + "behind the end"), "");
}

// Packet lengths are unsigned and positions 64-bit, although lines show both in 32 bits.
TEST(Walk, Beyond4GiB) {
    Workplace place;
    const std::string long_media = big().raw(media(25, "00000000")).at(6).u32(0xFFFFFFF0).str();
    place.write_sparse("long.gxf", 0x1FFFFFFF0, 0, long_media);
    place.write_sparse("long.gxf", 0x1FFFFFFF0, 0xFFFFFFF0,
                       long_media.substr(0, 16) + media(3, "00000000").substr(16));
    place.write_sparse("long.gxf", 0x1FFFFFFF0, 0x1FFFFFFE0, kEnd);
    const std::string dump = place.run({"long.gxf"}).out;
    EXPECT_EQ(lines_from(dump, "fffffff0", 1), "fffffff0 media -16\n");
    EXPECT_EQ(lines_from(dump, "ffffffe0"), "ffffffe0 end of stream 16\n");
}

}  // namespace
