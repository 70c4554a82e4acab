#include <gtest/gtest.h>

#include "support/bytes_of.h"
#include "support/command.h"
#include "support/facts_text.h"

// A line of PAL and one of 1080 lines at 25 frames, every word of which stands twice.
TEST(SdiFacts, Rasters) {
    const auto capture = [](const std::string &line) {
        std::string text = "STREAMER\nsize 100000\nnbits 8\n\t";
        for (int i = 0; i < 10; i++) text += line;
        return facts_of(text);
    };
    const std::string blank = big().fill(0x80, 280).str();
    EXPECT_EQ(capture(big().hex("FF0000B6").raw(blank).hex("FF0000AB").fill(0x10, 1440).str()),
              "SDI | 720x576 uncompressed 4:2:2 8 bits 25 fps");
    EXPECT_EQ(
        capture(
            big().hex("FFFF00000000B6B6").fill(0x80, 1432).hex("FFFF00000000ABAB").fill(0x10, 3832).str()),
        "SDI | 1920x1080 uncompressed 4:2:2 8 bits 25 fps");
}
