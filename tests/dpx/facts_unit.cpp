#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(DpxFacts, Samples) {
    Transcript transcript;
    SHOW(facts_of_samples("dpx"));
    SHOW(facts_of_samples("dpx-cineon"));
}

// What is not told is all ones; luminance and colour differences in elements of their own, a
// timecode that drops numbers at a rate that is not known.
TEST(DpxFacts, Elements) {
    const auto dpx = [](uint64_t elements, float film, float television) {
        ByteWriter header = big();
        header.fill(0xFF, 2048).at(0).text("SDPX").u32(2048).text("V2.0", 8).at(24).u32(1664).u32(384);
        header.at(770).u16(elements).u32(4).u32(2);
        for (const auto &[at, descriptor] : {std::pair{800, 6}, {872, 7}})
            header.at(static_cast<size_t>(at))
                .hex(descriptor == 6 ? "06 07 07 08" : "07 07 07 08")
                .hex("0000 0000");
        return header.at(1724)
            .f32(film)
            .at(1920)
            .hex("01000042")
            .at(1940)
            .f32(television)
            .at(2048)
            .zeros(8)
            .str();
    };
    const std::string size = "DPX V2.0 | 4x2 uncompressed ";
    const std::string more = "whole | byte order: big-endian | image offset: 2048 | ";
    const std::string end =
        "transfer: ITU-R 601-5 B/G | colorimetric: ITU-R 601-5 B/G | packing: 0 | industry header: set";
    EXPECT_EQ(facts_of(dpx(2, 24, 25)),
              size +
                  "4:2:2 8 bits colour 5,6,-1,-1 25 fps 1 frames | 01:00:00:02 television "
                  "header | " +
                  more + "elements: 2 | " + end);
    EXPECT_EQ(facts_of(dpx(0xFFFF, -1, -1)),
              size + "Y 8 bits colour 5,6,-1,-1 1 frames | 01:00:00;02 television header | " + more + end);
}

// Numbers whose low byte is 0x80 or more.
TEST(CineonFacts, Sizes) {
    const std::string header = big()
                                   .at(0)
                                   .hex("802A5FD7")
                                   .u32(1024)
                                   .at(193)
                                   .u8(1)
                                   .at(198)
                                   .u8(10)
                                   .at(200)
                                   .u32(2176)
                                   .u32(1688)
                                   .at(1024)
                                   .u8(0)
                                   .str();
    EXPECT_EQ(facts_of(header).substr(0, 19), "Cineon | 2176x1688 ");
    // Lines of six bytes, padded or not, with a size field that is wrong.
    std::string small = header;
    small.replace(20, 4, big().u32(9000).str());
    small.replace(198, 10, big().u8(16).u8(0).u32(3).u32(2).str());
    small.resize(1024);
    for (const size_t bytes : {12, 13, 15, 16})
        EXPECT_EQ(extent_of(small + std::string(bytes, 'x'), "a.cin"),
                  bytes == 12 || bytes == 16 ? "whole" : "cut the picture's end");
    // Cells of 16 bits have one sample of 10, those of 32 three, or one where no more are wanted.
    for (const auto &[packing, bytes] : {std::pair{3, 12}, {5, 8}, {0x85, 24}}) {
        std::string packed = small;
        packed[198] = 10;
        packed[681] = static_cast<char>(packing);
        EXPECT_EQ(extent_of(packed + std::string(static_cast<size_t>(bytes), 'x'), "a.cin"), "whole");
        EXPECT_EQ(extent_of(packed + std::string(static_cast<size_t>(bytes) - 1, 'x'), "a.cin"),
                  "cut the picture's end");
    }
    // Three samples of 16 bits in cells of two.
    std::string odd = small;
    odd.replace(204, 4, big().u32(1).str());
    odd[681] = 5;
    for (const size_t bytes : {5, 6, 8})
        EXPECT_EQ(extent_of(odd + std::string(bytes, 'x'), "a.cin"),
                  bytes == 5 ? "cut the picture's end" : "whole");
}

TEST(DpxFacts, Edges) {
    Transcript transcript;
    const std::string film = "dpx/film10-big.dpx";
    SHOW(sample_changed(film, "<2047 <2048 <8192 <8193 <11263 >1 28=00000000,<1664 28=00000000,<1663"));
    SHOW(sample_changed(film,
                        "16=00000000 16=00002C00 16=00002C01 16=00000001 16=00002C01,>1 16=00002C00,>2 "
                        "16=00000000,812=00000001 16=00002BFF,812=00000001 16=00002C18,812=00000001"));
    SHOW(sample_changed(film, "4=00000000 4=0000067F 4=00000680 4=000007FF 4=00000800 4=FFFFFFFF"));
    SHOW(sample_changed(film, "770=0000 770=0002,872=03 770=0008,1304=07 770=0009,1376=07 770=FFFF"));
    SHOW(sample_changed(film,
                        "772=00000000 772=00000001 772=00100000 772=00100001 772=FFFFFFFF 776=00000000 "
                        "776=00000001 776=00100000 776=00100001 776=FFFFFFFF"));
    SHOW(
        sample_changed(film, "800=00 800=32 800=33 800=95 800=96 800=9C 800=9D 801=0C 801=0D 802=0C 802=0D"));
    SHOW(sample_changed(film,
                        "803=00 803=01 803=04 803=08 803=09 803=0C 803=10 803=20 803=40 803=41 803=FF "
                        "803=0C,804=0000 804=0000 804=FFFF 806=0001 806=FFFF"));
    SHOW(sample_changed(film,
                        "808=00000000 808=000002FF 808=00000300 808=FFFFFFFF 812=00000001 812=0000FFFF "
                        "812=00010000 816=00000001 816=0000FFFF 816=00010000"));
    // Padding counts up to 65535 bytes, and where the header's size has it.
    SHOW(sample_changed(film,
                        "16=00002C17,812=00000001,>24 16=00002C18,812=00000001,>24 16=00182BE8,812=0000FFFF "
                        "16=00182C00,812=00010000 16=00012BFF,816=0000FFFF 16=00012C00,816=00010000"));
    SHOW(sample_changed(film, "4=00000800,<2047 4=000007FF,<1700 "));
    SHOW(sample_changed(film,
                        "1628=0000000200000001 1628=0000000100000002 1628=0000000000000002 "
                        "1628=0000000200000000 1628=FFFFFFFF00000001"));
    const std::string no_keycode = "1664=30303031303030303030303030303030";
    SHOW(sample_changed(film, no_keycode + " " + no_keycode + ",1664=3031 " + no_keycode +
                                  ",1670=303030303031 " + no_keycode + ",1676=30303031"));
    SHOW(sample_changed(film,
                        "1724=00000000 1724=3F7FFFFF 1724=3F800000 1724=447A0000 1724=447A0001 "
                        "1724=7FC00000 1724=7F800000 1724=BF800000 1724=41C00000,1940=41C80000"));
    SHOW(sample_changed(film,
                        "1920=00000000 1920=01020304,1928=00 1928=00 1928=01 1928=02 1924=00000000 "
                        "1924=12345678 1712=00000000 1712=00000001 1712=FFFFFFFF"));
    SHOW(sample_changed(film, "1948=00000000 1948=3F000000 1948=497423F0 1948=49742400 1948=FF800000"));
}

TEST(CineonFacts, Edges) {
    Transcript transcript;
    const std::string film = "dpx-cineon/film.cin";
    SHOW(sample_changed(film,
                        "<1023 <1024 <2047 <2048 <2049 <5119 >1 4=000007FF 4=00000800 4=00000400,<1024 "
                        "4=00000400,<1023 4=000003FF"));
    SHOW(sample_changed(film, "20=00000000 20=00001400 20=00001401 20=00001401,>1 20=00000001"));
    SHOW(sample_changed(film,
                        "193=00 193=01 193=02 193=08 193=09 197=03 197=04 198=00 198=01 198=08 198=40 "
                        "198=41 198=FF"));
    SHOW(sample_changed(film,
                        "200=00000000 200=00000001 200=00100000 200=00100001 200=FFFFFFFF 204=00000000 "
                        "204=00000001 204=00100000 204=00100001 204=FFFFFFFF"));
    SHOW(sample_changed(film, "20=001813E8,684=0000FFFF 20=00181400,684=00010000 4=000007FF,<1500"));
    SHOW(sample_changed(film,
                        "681=00 681=FF 684=00000001 684=0000FFFF 684=00010000 688=00000001 192=01 683=01"));
    SHOW(sample_changed(film,
                        "1024=FF 1024=00000000000000000000000000 1026=FF 1028=FFFFFFFF 1032=FFFFFFFF "
                        "1024=64 1025=64 1028=000F4240 1032=00002710"));
    SHOW(sample_changed(film,
                        "1068=00000000 1068=00000001 1072=3F7FFFFF 1072=447A0000 1072=447A0001 "
                        "980=49742400"));
}
