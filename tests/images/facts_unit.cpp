#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

TEST(ImageFacts, Samples) {
    Transcript transcript;
    SHOW(facts_of_samples("images"));
}

// Versions other than the one that keldump dumps; YUV and TGA have no magic number.
TEST(ImageFacts, Softimage) {
    Transcript transcript;
    for (const float version : {3.0F, 3.71F})
        SHOW(facts_of(big()
                          .hex("5380F634")
                          .f32(version)
                          .text("comment", 80)
                          .text("PICT")
                          .u16(1920)
                          .u16(1080)
                          .f32(1)
                          .u16(3)
                          .u16(0)
                          .hex("010802E0 00080210")
                          .zeros(64)
                          .str()));
    SHOW(facts_of(std::string(100, 'x'), "noise.tga"));
    EXPECT_EQ(facts_of("GIF89a" + hex("4001 F200 F6 00 00")), "GIF | 320x242 LZW palette 7 bits");
}

// Two lines of two pixels, each behind a count and before a zero; the second was never written.
TEST(ImageFacts, LinesOfSgi) {
    const auto sgi = [](const std::string &last) {
        return big()
            .hex("01DA 01 01 0002")
            .u16(2)
            .u16(2)
            .u16(1)
            .at(512)
            .u32(528)
            .u32(532)
            .u32(4)
            .u32(4)
            .hex("82070700")
            .raw(last)
            .str();
    };
    EXPECT_EQ(facts_of(sgi(hex("82090900"))), "SGI | 2x2 RLE Y 8 bits 1 frames | whole");
    EXPECT_EQ(extent_of(sgi(hex("000000")), "a.sgi"), "cut the picture's end");
    EXPECT_EQ(extent_of(sgi(hex("00000000")), "a.sgi"), "cut the last lines (zeros)");
}
