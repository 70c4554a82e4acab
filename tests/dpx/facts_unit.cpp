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
        header.fill(0xFF, 2048).at(0).text("SDPX").u32(2048).text("V2.0", 8).at(24).u32(1664, 384);
        header.at(770).u16(elements).u32(4, 2);
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
    ByteWriter header_bytes = big();
    header_bytes.at(0).hex("802A5FD7").u32(1024).at(193).u8(1).at(198).u8(10).at(200).u32(2176, 1688);
    header_bytes.at(1024).u8(0);
    const std::string header = header_bytes.str();
    EXPECT_EQ(facts_of(header).substr(0, 19), "Cineon | 2176x1688 ");
    // Lines of six bytes, padded or not, with a size field that is wrong.
    std::string small = header;
    small.replace(20, 4, big().u32(9000).str());
    small.replace(198, 10, big().u8(16, 0).u32(3, 2).str());
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
    ROWS("film", sample_changed(film, rows));
    // Padding counts up to 65535 bytes, and where the header's size has it.
    ROWS("film 2", sample_changed(film, rows));
    const std::string no_keycode = "1664=30303031303030303030303030303030";
    SHOW(sample_changed(film, no_keycode + " " + no_keycode + ",1664=3031 " + no_keycode +
                                  ",1670=303030303031 " + no_keycode + ",1676=30303031"));
    ROWS("film 3", sample_changed(film, rows));
}

TEST(CineonFacts, Edges) {
    Transcript transcript;
    const std::string film = "dpx-cineon/film.cin";
    ROWS("film", sample_changed(film, rows));
}
