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
}
